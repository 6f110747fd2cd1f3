#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QObject>
#include <QStringList>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>

namespace Velloro {

/// A connection to sway's own socket, over which it answers questions, takes commands and tells
/// what happens. Other compositors that offer the same socket serve as well.
///
/// Used on one thread. Nothing waits but `dispatchUntil`.
class SwaySocket final : public QObject
{
    Q_OBJECT

public:
    enum class Request : uint32_t {
        runCommand = 0, ///< The payload is the command; the reply an array with a result of each.
        getWorkspaces = 1,
        subscribe = 2,
        getOutputs = 3,
        getTree = 4,
        getVersion = 7,
        getBindingModes = 8,
        getConfig = 9,
        getBindingState = 12,
    };
    enum class Event : uint32_t {
        workspace = 0x80000000,
        output = 0x80000001,
        mode = 0x80000002,
        window = 0x80000003,
        binding = 0x80000005,
        shutdown = 0x80000006,
        tick = 0x80000007,
        input = 0x80000015,
    };
    Q_ENUM(Event)
    /// What came as the answer; null when the connection ended before, or it made no sense.
    using Reply = std::function<void(const QJsonDocument &answer)>;

    /// Connects to the socket of this path, or to the one that the environment names. Null where
    /// there is none.
    [[nodiscard]] static std::unique_ptr<SwaySocket> open(const QString &path = {});
    ~SwaySocket() override;

    [[nodiscard]] bool isAlive() const;
    /// Asks for something. `reply` is called once, later; replies come in the order of the
    /// requests.
    void send(Request request, const QByteArray &payload = {}, Reply reply = {});
    /// Asks to be told of these events, by sway's names for them, such as "window"; in addition to
    /// those asked for before. `isTaken` is told whether sway does.
    void subscribe(const QStringList &events, std::function<void(bool isTaken)> done = {});

    /// Hands on what arrives until `done` says so, at least what has arrived already; false when
    /// the deadline came first.
    bool dispatchUntil(const std::function<bool()> &done, const QDeadlineTimer &deadline);

Q_SIGNALS:
    void eventReceived(Velloro::SwaySocket::Event event, const QJsonObject &content);
    /// Sway is gone. Once; what is sent afterwards is answered with nothing.
    void ended();

private:
    SwaySocket();

    void readMessages();
    void handleMessage(uint32_t type, const QJsonDocument &content);
    void end();

    QLocalSocket m_socket;
    std::deque<Reply> m_replies;
    bool m_ended = false;
};

} // namespace Velloro
