option(VELLORO_BUNDLED_WHISPER "Build whisper.cpp into .deps, instead of using the system's" ON)

if(VELLORO_BUNDLED_WHISPER)
    # Built once for all build trees, before they are configured: a project of its own, which lies
    # in .deps as well so that several source trees can share it by a symbolic link. Another
    # configuration waits meanwhile.
    file(MAKE_DIRECTORY "${CMAKE_SOURCE_DIR}/.deps")
    file(REAL_PATH "${CMAKE_SOURCE_DIR}/.deps" WHISPER_DEPS)
    file(LOCK "${WHISPER_DEPS}/lock" GUARD FILE)
    foreach(name CMakeLists.txt fetch-package fair-waiting.h)
        configure_file("${CMAKE_CURRENT_LIST_DIR}/whisper/${name}"
            "${WHISPER_DEPS}/whisper-build/project/${name}" COPYONLY)
    endforeach()
    set(WHISPER_PREFIX "${WHISPER_DEPS}/whisper")
    # What was installed and has been deleted is no output that the build would miss.
    if(NOT EXISTS "${WHISPER_PREFIX}/lib/cmake/whisper")
        file(GLOB INSTALL_STAMPS "${WHISPER_DEPS}/whisper-build/external/Stamp/*/*-install")
        if(INSTALL_STAMPS)
            file(REMOVE ${INSTALL_STAMPS})
        endif()
    endif()
    message(STATUS "Building whisper.cpp, unless it is up to date in ${WHISPER_PREFIX}")
    execute_process(COMMAND ${CMAKE_COMMAND} -G Ninja
        -S "${WHISPER_DEPS}/whisper-build/project" -B "${WHISPER_DEPS}/whisper-build"
        "-DWHISPER_PREFIX=${WHISPER_PREFIX}" COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
    execute_process(COMMAND ${CMAKE_COMMAND} --build "${WHISPER_DEPS}/whisper-build"
        COMMAND_ERROR_IS_FATAL ANY)

    # whisper.cpp's package file looks for the BLAS library of its build; only a cache variable is
    # heeded.
    file(GLOB WHISPER_BLAS_LIBRARY "${WHISPER_PREFIX}/lib/libscipy_openblas.so")
    if(WHISPER_BLAS_LIBRARY)
        set(BLAS_LIBRARIES ${WHISPER_BLAS_LIBRARY} CACHE STRING "OpenBLAS, for whisper.cpp" FORCE)
        mark_as_advanced(BLAS_LIBRARIES)
    endif()
    list(PREPEND CMAKE_PREFIX_PATH "${WHISPER_PREFIX}")
endif()
find_package(whisper REQUIRED)
