#include "Platform/Linux/Desktop/DBusCall.h"

#include "Base/StringLiterals.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QObject>
#include <algorithm>
#include <limits>
#include <utility>

namespace Velloro::DBusCall {

QDBusMessage make(const QString &service, const QString &path, const QString &interface,
                  const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return message;
}

QDBusMessage makeGet(const QString &service, const QString &path, const QString &interface,
                     const QString &property)
{
    return make(service, path, properties, u"Get"_s, {interface, property});
}

QVariant property(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage)
        return {};
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

bool isTimeout(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ErrorMessage)
        return false;
    const QDBusError::ErrorType type = QDBusError(reply).type();
    return type == QDBusError::NoReply || type == QDBusError::Timeout
        || type == QDBusError::TimedOut;
}

int milliseconds(std::chrono::milliseconds limit)
{
    return static_cast<int>(std::clamp<int64_t>(limit.count(), 0, std::numeric_limits<int>::max()));
}

void whenAnswered(const QDBusPendingCall &call, QObject *receiver,
                  std::function<void(const QDBusMessage &reply)> handler)
{
    auto *watcher = new QDBusPendingCallWatcher(call, receiver);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, receiver,
                     [watcher, handler = std::move(handler)] {
                         watcher->deleteLater();
                         handler(watcher->reply());
                     });
}

} // namespace Velloro::DBusCall
