# std::expected as a library, until the compiler brings it.
find_package(tl-expected REQUIRED)
