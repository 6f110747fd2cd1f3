/// What the leak checker has to be told about libraries; linked into whatever is built with the
/// address sanitizer, the program itself included.

/// Qt 6.4's radio and tab buttons tell assistive programs what they are while QML still makes them,
/// which then gives them a second record and forgets the first. Its accessibility bridge, an event
/// filter, forgets the copy of a key that closes the window that it was for.
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
