# A system-installed whisper.cpp is used where there is one; otherwise the one that
# tools/setup built into .deps/whisper (see CMAKE_PREFIX_PATH in the top-level file).
find_package(whisper QUIET)
if(NOT whisper_FOUND)
    message(FATAL_ERROR "whisper.cpp was not found: run tools/setup once, which fetches and builds it")
endif()
