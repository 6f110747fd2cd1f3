#pragma once

#include "Platform/Linux/Desktop/DBusGreeting.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QSet>
#include <functional>
#include <memory>

namespace Velloro {

/// Whether the screen is locked, as the desktop's screen saver tells on the session bus and the
/// login manager on the system bus. Both are asked once and heard from then on; nobody is waited
/// for.
///
/// A screen saver tells that it is active, which can also mean that it has only blanked the screen.
/// GNOME's is not counted where the login manager knows of the session, which it tells of the lock
/// itself. Of the others an active one counts as a lock: most tell nothing more of a real one.
class DBusLockState final : public QObject
{
    Q_OBJECT

public:
    /// The system bus is the one of this address.
    explicit DBusLockState(const QDBusConnection &sessionBus,
                           const QString &systemBusAddress = defaultSystemBusAddress());
    ~DBusLockState() override;

    [[nodiscard]] bool isLocked() const;

    [[nodiscard]] static QString defaultSystemBusAddress();

Q_SIGNALS:
    /// It was not locked before.
    void locked();

private Q_SLOTS:
    void activeChanged(const QDBusMessage &message);
    void ownerChanged(const QString &name, const QString &before, const QString &now);
    void sessionPropertiesChanged(const QDBusMessage &message);

private:
    using AnswerHandler = std::function<void(const QVariant &)>;

    void watchScreenSaver(const QString &name);
    void askScreenSaver(const QString &name);
    void findSession();
    void watchSession(const QString &path);
    /// Calls without waiting; an error leads to nothing.
    void ask(const QDBusConnection &bus, const QDBusMessage &call, const AnswerHandler &handler);
    /// What the login manager has told.
    void setHint(bool isLocked);
    void setLocked(const QString &who, bool saysLocked);

    QDBusConnection m_sessionBus;
    QDBusConnection m_systemBus{QString()};
    std::unique_ptr<DBusGreeting> m_greeting;
    /// Who says that the screen is locked, or that it has blanked it.
    QSet<QString> m_locks;
    /// The login manager has told whether the session is locked.
    bool m_isHintKnown = false;
};

} // namespace Velloro
