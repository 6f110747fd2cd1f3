#pragma once

#include "Platform/Linux/Accessibility/AtSpiReference.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>
#include <QVariantList>
#include <chrono>
#include <memory>
#include <optional>
#include <sys/types.h>

class QDBusPendingCallWatcher;
class QDBusServiceWatcher;

namespace Velloro {

class DBusGreeting;

/// The connection to the desktop's accessibility bus: found through the session bus, made again
/// after the bus was restarted, with the focus events that applications send on it. Main thread.
///
/// Calls that wait share one allowance of time per turn of the event loop, so that an operation of
/// many calls has one bound. An application that once let it run out is not asked again until it
/// answers.
class AtSpiBus : public QObject
{
    Q_OBJECT

public:
    /// Starts to look for the bus; does not wait for it.
    explicit AtSpiBus(QObject *parent = nullptr);
    ~AtSpiBus() override;

    /// Whether the bus answers and accessibility is enabled. The first call waits for the answers
    /// to the questions that the constructor asked, for at most a second, and for the bus itself,
    /// for at most 0.3 s. It belongs before the event loop: where
    /// the bus hangs, the toolkit is kept from it, too.
    [[nodiscard]] bool isUsable();
    /// Asks for accessibility to be enabled; `isUsable` tells when it is.
    void enable();

    /// Calls a method and waits for the reply: an error message when there is none in time.
    [[nodiscard]] QDBusMessage call(const AtSpiReference &object, const QString &interface,
                                    const QString &method, const QVariantList &arguments = {});
    /// Reads a property as `call` does; an invalid value when it can't be read.
    [[nodiscard]] QVariant property(const AtSpiReference &object, const QString &interface,
                                    const QString &name);
    /// Calls a method without waiting.
    [[nodiscard]] QDBusPendingCall send(const AtSpiReference &object, const QString &interface,
                                        const QString &method, const QVariantList &arguments,
                                        std::chrono::milliseconds timeout);

    /// What is left of this turn's allowance.
    [[nodiscard]] std::chrono::milliseconds remaining() const;
    /// Takes the time that waiting for an application took out of the allowance, and remembers the
    /// application when that used it up.
    void spend(const QString &service, std::chrono::milliseconds elapsed);
    /// Whether the application let the time run out and has not answered since.
    [[nodiscard]] bool isUnresponsive(const QString &service) const;
    /// Counts the turns of the event loop in which calls were made; what was read in the same turn
    /// can be relied on.
    [[nodiscard]] quint64 turn() const { return m_turn; }

    /// The process behind a bus name, as the bus knows it; -1 when it is not known.
    [[nodiscard]] pid_t processOf(const QString &service);
    /// The toolkit with which the application is made, as it names it itself.
    [[nodiscard]] QString toolkitOf(const QString &service);

Q_SIGNALS:
    void connected();
    void disconnected();
    void focusGained(const Velloro::AtSpiReference &object);
    void focusLost(const Velloro::AtSpiReference &object);
    void windowActivated(const Velloro::AtSpiReference &window);
    void windowDeactivated(const Velloro::AtSpiReference &window);
    /// An application has left the bus.
    void serviceGone(const QString &service);

private Q_SLOTS:
    void onStatusChanged(const QString &interface, const QVariantMap &changed,
                         const QStringList &invalidated);
    void onSessionBusLost();
    void onBusLost();
    void onFocusChanged(const QDBusMessage &message);
    void onWindowActivated(const QDBusMessage &message);
    void onWindowDeactivated(const QDBusMessage &message);
    void onOwnerChanged(const QString &service, const QString &oldOwner, const QString &newOwner);

private:
    /// Takes the reply to a question to the launcher when it is there.
    using ReplyHandler = void (AtSpiBus::*)(const QDBusMessage &reply);

    void ask();
    void await(std::unique_ptr<QDBusPendingCallWatcher> &slot, const QDBusPendingCall &call,
               ReplyHandler handler);
    void finish(std::unique_ptr<QDBusPendingCallWatcher> &slot, ReplyHandler handler);
    void takeAddress(const QDBusMessage &reply);
    void takeEnabled(const QDBusMessage &reply);
    void greet(const QString &address);
    void endGreeting();
    void keepToolkitOff();
    void connectTo(const QString &address);
    void disconnect();
    void retryLater();
    void learn(const QString &service);
    void probe(const QString &service);
    void openTurn();

    QDBusConnection m_session;
    std::unique_ptr<QDBusServiceWatcher> m_launcherWatcher;
    std::unique_ptr<QDBusPendingCallWatcher> m_addressQuestion;
    std::unique_ptr<QDBusPendingCallWatcher> m_enabledQuestion;
    bool m_waitedForAnswers = false;
    bool m_launcherHangs = false;
    bool m_isEnabled = false;
    QTimer m_retry;
    std::chrono::milliseconds m_retryDelay;

    /// Set while the accessibility bus is asked for a sign of life.
    DBusGreeting *m_greeting = nullptr;
    /// The accessibility bus while connected; its name among this process's connections.
    std::optional<QDBusConnection> m_bus;
    QString m_busName;
    QHash<QString, QDBusPendingCall> m_processes;
    QHash<QString, QString> m_toolkits;
    QSet<QString> m_unresponsive;

    std::chrono::milliseconds m_spent{0};
    bool m_turnIsOpen = false;
    quint64 m_turn = 0;
};

} // namespace Velloro
