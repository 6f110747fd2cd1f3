find_package(PkgConfig REQUIRED)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET
    xcb xcb-res xcb-xtest xcb-xkb xcb-xinput xcb-randr xcb-shape xcb-xfixes xcb-keysyms
    xkbcommon xkbcommon-x11)
