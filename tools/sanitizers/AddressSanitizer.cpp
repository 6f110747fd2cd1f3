/// What the leak checker has to be told about libraries; linked into all tests and into the program
/// that they drive.

/// Qt 6.4's radio and tab buttons tell assistive programs what they are while QML still makes them,
/// which then gives them a second record and forgets the first. Its accessibility bridge, an event
/// filter, forgets the copy of a key that closes the window that it was for; it has no name of its
/// own, so what other filters of the whole application get is left out with it.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:QQmlData::createQQmlData\n"
           "leak:QCoreApplicationPrivate::sendThroughApplicationEventFilters\n";
}

extern "C" const char *__lsan_default_options()
{
    return "print_suppressions=0";
}

/// Libraries have no frame pointers, and a suppression needs to see who asked for the memory.
extern "C" const char *__asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}
