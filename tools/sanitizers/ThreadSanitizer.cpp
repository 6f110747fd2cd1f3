/// What the thread sanitizer has to be told about Qt, which was not built for it.
#include <QFutureInterface>
#include <QObject>
#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

/// Most callers of the functions that the sanitizer replaces are libraries, whose locks it misses.
extern "C" const char *__tsan_default_options()
{
    return "ignore_interceptors_accesses=1:history_size=7";
}

/// Work handed to another thread: the lock of Qt's event queue is a futex, which is not seen.
struct HandOver final : QtPrivate::QSlotObjectBase
{
    explicit HandOver(QSlotObjectBase *slot)
        : QSlotObjectBase(&run)
        , work(slot)
    {
    }

    static void run(int operation, QSlotObjectBase *base, QObject *receiver, void **data, bool *)
    {
        auto *self = static_cast<HandOver *>(base);
        __tsan_acquire(self);
        if (operation == Call) {
            self->work->call(receiver, data);
        } else if (operation == Destroy) {
            self->work->destroyIfLastRef();
            delete self;
        }
    }

    QSlotObjectBase *work;
};

/// Takes the place of Qt's own, which it calls.
bool QMetaObject::invokeMethodImpl(QObject *object, QtPrivate::QSlotObjectBase *slot,
                                   Qt::ConnectionType type, void *result)
{
    static const auto invoke = reinterpret_cast<decltype(&invokeMethodImpl)>(
        dlsym(RTLD_NEXT,
              "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBase"
              "EN2Qt14ConnectionTypeEPv"));
    auto *handOver = new HandOver(slot);
    __tsan_release(handOver);
    return invoke(object, handOver, type, result);
}

/// Takes the place of Qt's own, which it calls: who lets go of a result last destroys it.
bool QFutureInterfaceBase::derefT() const noexcept
{
    static const auto deref = reinterpret_cast<bool (*)(const QFutureInterfaceBase *)>(
        dlsym(RTLD_NEXT, "_ZNK20QFutureInterfaceBase6derefTEv"));
    QFutureInterfaceBasePrivate *const key = d;
    __tsan_release(key);
    const bool isShared = deref(this);
    __tsan_acquire(key);
    return isShared;
}
