/// What the thread sanitizer has to be told about libraries that were not built for it; linked into
/// all tests and into the program that they drive.

#include <QFutureInterface>
#include <QObject>
#include <cstdarg>
#include <dlfcn.h>
#include <malloc.h>
#include <sanitizer/tsan_interface.h>
#include <sched.h>

namespace {

template <typename Function>
Function *libraryFunction(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/// Work handed to another thread. Qt's own lock around its event queue is a futex, which the
/// sanitizer doesn't see, so the hand-over is named to it here.
class HandOver final : public QtPrivate::QSlotObjectBase
{
public:
    explicit HandOver(QtPrivate::QSlotObjectBase *work)
        : QSlotObjectBase(&run)
        , m_work(work)
    {
    }

private:
    static void run(int operation, QSlotObjectBase *base, QObject *receiver, void **arguments,
                    bool *)
    {
        auto *self = static_cast<HandOver *>(base);
        __tsan_acquire(self);
        if (operation == Call) {
            self->m_work->call(receiver, arguments);
            __tsan_release(self);
        } else if (operation == Destroy) {
            self->m_work->destroyIfLastRef();
            delete self;
        }
    }

    QtPrivate::QSlotObjectBase *m_work;
};

} // namespace

/// The sanitizer's own functions leave the memory that they are given alone: most of their callers
/// are libraries, whose locks are not seen. What the program copies and deletes is told below.
extern "C" const char *__tsan_default_options()
{
    return "ignore_interceptors_accesses=1:die_after_fork=0:history_size=7";
}

/// Qt's bus thread asks a receiver for its class while the receiver's own thread waits for it, by a
/// futex. libdbus holds its own locks in either order. ggml's threads wait for each other in loops
/// of their own.
extern "C" const char *__tsan_default_suppressions()
{
    return "race:^Velloro::AtSpiBus::metaObject\n"
           "deadlock:libdbus-1.so\n"
           "race:^ggml_\n";
}

extern "C" {

void __tsan_read_range(const void *memory, size_t size);
void __tsan_write_range(void *memory, size_t size);

// The linker puts each of these in the place of the function that it is named after: in the
// program and in what is linked into it, but not in shared libraries.

void *__real_memcpy(void *to, const void *from, size_t size);
void *__wrap_memcpy(void *to, const void *from, size_t size)
{
    __tsan_read_range(from, size);
    __tsan_write_range(to, size);
    return __real_memcpy(to, from, size);
}

void *__real_memmove(void *to, const void *from, size_t size);
void *__wrap_memmove(void *to, const void *from, size_t size)
{
    __tsan_read_range(from, size);
    __tsan_write_range(to, size);
    return __real_memmove(to, from, size);
}

void *__real_memset(void *memory, int value, size_t size);
void *__wrap_memset(void *memory, int value, size_t size)
{
    __tsan_write_range(memory, size);
    return __real_memset(memory, value, size);
}

void __real__ZdlPv(void *memory);
void __wrap__ZdlPv(void *memory)
{
    __tsan_write_range(memory, malloc_usable_size(memory));
    __real__ZdlPv(memory);
}

void __real__ZdlPvm(void *memory, size_t size);
void __wrap__ZdlPvm(void *memory, size_t size)
{
    __tsan_write_range(memory, size);
    __real__ZdlPvm(memory, size);
}

} // extern "C"

/// Takes the place of Qt's own, which it calls.
bool QMetaObject::invokeMethodImpl(QObject *object, QtPrivate::QSlotObjectBase *slot,
                                   Qt::ConnectionType type, void *result)
{
    static const auto invoke = libraryFunction<decltype(invokeMethodImpl)>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt"
        "14ConnectionTypeEPv");
    auto *handOver = new HandOver(slot);
    handOver->ref();
    __tsan_release(handOver);
    const bool isInvoked = invoke(object, handOver, type, result);
    if (type == Qt::BlockingQueuedConnection)
        __tsan_acquire(handOver);
    handOver->destroyIfLastRef();
    return isInvoked;
}

/// Takes the place of Qt's own, which it calls: who lets go of a result last destroys it.
bool QFutureInterfaceBase::derefT() const noexcept
{
    static const auto deref = libraryFunction<bool(const QFutureInterfaceBase *)>(
        "_ZNK20QFutureInterfaceBase6derefTEv");
    QFutureInterfaceBasePrivate *const key = d;
    __tsan_release(key);
    const bool isShared = deref(this);
    if (!isShared)
        __tsan_acquire(key);
    return isShared;
}

/// Takes the place of the C library's, which it calls: Qt starts programs in children that share
/// its memory for a moment, and would spoil the sanitizer's record of the thread that starts them.
extern "C" int clone(int (*function)(void *), void *stack, int flags, void *argument, ...)
{
    va_list rest;
    va_start(rest, argument);
    auto *parent = va_arg(rest, pid_t *);
    auto *storage = va_arg(rest, void *);
    auto *child = va_arg(rest, pid_t *);
    va_end(rest);
    static const auto real = libraryFunction<decltype(clone)>("clone");
    if (flags & CLONE_VFORK)
        flags &= ~CLONE_VM;
    return real(function, stack, flags, argument, parent, storage, child);
}
