# Flags that every target of ours is compiled with, as an interface target.
add_library(velloro_options INTERFACE)
target_compile_options(velloro_options INTERFACE -Wall -Wextra)
target_compile_definitions(velloro_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS)

if(VELLORO_SANITIZE)
    target_compile_options(velloro_options INTERFACE
        -fsanitize=${VELLORO_SANITIZE} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(velloro_options INTERFACE -fsanitize=${VELLORO_SANITIZE})
endif()
if(VELLORO_SANITIZE STREQUAL thread)
    # Qt's own headers have a fence, which the thread sanitizer doesn't know.
    target_compile_options(velloro_options INTERFACE -Wno-tsan)
endif()

find_program(VELLORO_CCACHE ccache)
if(VELLORO_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${VELLORO_CCACHE}")
endif()
