/// What the thread sanitizer has to be told about libraries that were not built for it; linked into
/// whatever is built with it, the program itself included.

#include <QObject>
#include <cstdarg>
#include <dlfcn.h>
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
    explicit HandOver(QtPrivate::QSlotObjectBase *work) : QSlotObjectBase(&run), m_work(work) {}

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

/// Accesses made by uninstrumented libraries are left out: the locks around them are not seen.
extern "C" const char *__tsan_default_options()
{
    return "ignore_noninstrumented_modules=1:die_after_fork=0:history_size=7";
}

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
