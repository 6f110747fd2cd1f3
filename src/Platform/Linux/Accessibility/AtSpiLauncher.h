#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QTimer>
#include <chrono>
#include <memory>

class QDBusPendingCall;
class QDBusPendingCallWatcher;
class QDBusServiceWatcher;

namespace Velloro {

class DBusGreeting;

/// The service on the session bus that starts the desktop's accessibility bus, knows where that is
/// and whether accessibility is enabled. Main thread.
class AtSpiLauncher : public QObject
{
    Q_OBJECT

public:
    /// Starts to look for the bus; does not wait for it.
    explicit AtSpiLauncher(QObject *parent = nullptr);
    ~AtSpiLauncher() override;

    /// Waits, at the first call only, for the answers to the questions that the constructor asked,
    /// for at most a second, and for the bus itself, for at most 0.3 s. It belongs before the event
    /// loop: where the bus hangs, the toolkit is kept from it, too.
    void waitForAnswers();
    [[nodiscard]] bool isEnabled() const { return m_isEnabled; }
    /// Asks for accessibility to be enabled; `isEnabled` tells when it is.
    void enable();
    /// Looks for the bus again after a while: the one that was found is gone.
    void findAgain();

Q_SIGNALS:
    /// The bus has this address, and has shown that it lives. Never sent from the constructor.
    void busFound(const QString &address);
    /// Without the session bus the accessibility bus counts as gone, and is not found again.
    void sessionBusLost();

private Q_SLOTS:
    void onStatusChanged(const QString &interface, const QVariantMap &changed,
                         const QStringList &invalidated);
    void onSessionBusLost();

private:
    /// Takes the reply to a question when it is there.
    using ReplyHandler = void (AtSpiLauncher::*)(const QDBusMessage &reply);

    void ask();
    void await(std::unique_ptr<QDBusPendingCallWatcher> &slot, const QDBusPendingCall &call,
               ReplyHandler handler);
    void finish(std::unique_ptr<QDBusPendingCallWatcher> &slot, ReplyHandler handler);
    void takeAddress(const QDBusMessage &reply);
    void takeEnabled(const QDBusMessage &reply);
    void greet(const QString &address);
    void endGreeting();
    void keepToolkitOff();
    void retryLater();

    QDBusConnection m_session;
    std::unique_ptr<QDBusServiceWatcher> m_serviceWatcher;
    std::unique_ptr<QDBusPendingCallWatcher> m_addressQuestion;
    std::unique_ptr<QDBusPendingCallWatcher> m_enabledQuestion;
    bool m_waitedForAnswers = false;
    bool m_hangs = false;
    bool m_isEnabled = false;
    bool m_isBusFound = false;
    /// Set while the accessibility bus is asked for a sign of life.
    DBusGreeting *m_greeting = nullptr;
    QTimer m_retry;
    std::chrono::milliseconds m_retryDelay;
};

} // namespace Velloro
