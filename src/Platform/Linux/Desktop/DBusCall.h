#pragma once

#include "Base/StringLiterals.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QString>
#include <QVariantList>
#include <chrono>
#include <functional>

class QObject;

namespace Velloro {

/// Calls over D-Bus, put together and answered. Qt's proxies do not serve here: making one asks the
/// daemon for the owner of the service's name, and waits for that without a bound.
namespace DBusCall {

/// The interface by which every object tells its properties.
inline const QString properties = u"org.freedesktop.DBus.Properties"_s;

/// A call of a method that `interface` of an object has.
[[nodiscard]] QDBusMessage make(const QString &service, const QString &path,
                                const QString &interface, const QString &method,
                                const QVariantList &arguments = {});
/// A call for a property that `interface` of an object has.
[[nodiscard]] QDBusMessage makeGet(const QString &service, const QString &path,
                                   const QString &interface, const QString &property);
/// The property in the reply to that; invalid in any other message.
[[nodiscard]] QVariant property(const QDBusMessage &reply);

/// Whether the message says that there was no reply in time.
[[nodiscard]] bool isTimeout(const QDBusMessage &reply);
/// A time limit as Qt takes it.
[[nodiscard]] int milliseconds(std::chrono::milliseconds limit);

/// Hands over the reply or error when it has come, unless `receiver` is gone by then. Does not
/// wait.
void whenAnswered(const QDBusPendingCall &call, QObject *receiver,
                  std::function<void(const QDBusMessage &reply)> handler);

} // namespace DBusCall
} // namespace Velloro
