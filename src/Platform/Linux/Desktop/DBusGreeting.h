#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>

namespace Velloro {

/// Asks the daemon of a D-Bus address for a sign of life. Connecting to a bus waits for a daemon
/// that hangs, and all connections of the process with it, so this comes first; it does not wait.
class DBusGreeting : public QObject
{
    Q_OBJECT

public:
    /// Greets the first local socket that the address names; there is no answer from another kind.
    DBusGreeting(const QString &address, std::chrono::milliseconds limit,
                 QObject *parent = nullptr);

    [[nodiscard]] bool isFinished() const { return m_isFinished; }
    [[nodiscard]] bool isAnswered() const { return m_isAnswered; }

    /// Waits until finished, for that long at most; whether there was an answer. Reports it within
    /// the call.
    bool waitForAnswer(std::chrono::milliseconds limit);

Q_SIGNALS:
    /// Sent once, and never from within the constructor. The object must not be deleted by it.
    void finished(bool isAnswered);

private:
    void connectToSocket(const QString &address);
    void finish(bool isAnswered);

    QLocalSocket m_socket;
    QTimer m_limit;
    bool m_isFinished = false;
    bool m_isAnswered = false;
};

} // namespace Velloro
