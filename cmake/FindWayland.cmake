# Wayland's client library, and the code of the protocols that the program speaks: those of Wayland
# and of KDE from Debian's packages, the others from our own descriptions.
find_package(PkgConfig REQUIRED)
pkg_check_modules(WAYLAND REQUIRED IMPORTED_TARGET wayland-client)
pkg_get_variable(WAYLAND_SCANNER wayland-scanner wayland_scanner)
pkg_get_variable(WAYLAND_PROTOCOLS wayland-protocols pkgdatadir)
find_package(PlasmaWaylandProtocols REQUIRED)

# velloro_protocols(NAME FILE...): a library with the client side of the protocols. The header of
# FILE.xml is "FILE-client.h".
function(velloro_protocols name)
    set(sources "")
    foreach(file ${ARGN})
        cmake_path(GET file STEM stem)
        set(code ${CMAKE_CURRENT_BINARY_DIR}/protocols/${stem})
        add_custom_command(
            OUTPUT ${code}-client.h ${code}.c
            COMMAND ${WAYLAND_SCANNER} --strict client-header ${file} ${code}-client.h
            COMMAND ${WAYLAND_SCANNER} private-code ${file} ${code}.c
            DEPENDS ${file}
            COMMENT "Generating the protocol ${stem}"
            VERBATIM)
        list(APPEND sources ${code}-client.h ${code}.c)
    endforeach()
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/protocols)
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} SYSTEM PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/protocols)
    target_link_libraries(${name} PUBLIC PkgConfig::WAYLAND)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
endfunction()
