# A system-installed whisper.cpp is used where there is one; otherwise the one that
# tools/setup built into .deps/whisper (see CMAKE_PREFIX_PATH in the top-level file).

# whisper.cpp's package file looks for the BLAS library that its build used: tools/setup keeps it
# beside the others. Only a cache variable is heeded.
file(GLOB WHISPER_BLAS_LIBRARY ${CMAKE_SOURCE_DIR}/.deps/whisper/lib/libscipy_openblas.so)
if(WHISPER_BLAS_LIBRARY)
    set(BLAS_LIBRARIES ${WHISPER_BLAS_LIBRARY} CACHE STRING "OpenBLAS, for whisper.cpp" FORCE)
    mark_as_advanced(BLAS_LIBRARIES)
endif()

find_package(whisper QUIET)
if(NOT whisper_FOUND)
    message(FATAL_ERROR "whisper.cpp was not found: run tools/setup once, which fetches and builds it")
endif()

# The package file of ggml is quiet about it, but a whisper.cpp from elsewhere doesn't need this copy.
if(NOT GGML_BLAS OR NOT whisper_DIR MATCHES "^${CMAKE_SOURCE_DIR}/\\.deps/")
    set(WHISPER_BLAS_LIBRARY "")
endif()
