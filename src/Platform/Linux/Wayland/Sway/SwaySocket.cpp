#include "Platform/Linux/Wayland/Sway/SwaySocket.h"

#include "Base/StringLiterals.h"

#include <QJsonArray>
#include <cstring>
#include <utility>

namespace Velloro {

namespace {

constexpr char magic[] = {'i', '3', '-', 'i', 'p', 'c'};
// Connecting to a local socket waits only while its queue is full.
constexpr int connectPatience = 500; // ms
// The tree of a hundred windows takes 100 KiB.
constexpr uint32_t largestMessage = 16 * 1024 * 1024;
constexpr uint32_t eventBit = 0x80000000;

/// What precedes each message, in the machine's own byte order.
struct [[gnu::packed]] Header
{
    char start[sizeof magic];
    uint32_t size;
    uint32_t type;
};

} // namespace

std::unique_ptr<SwaySocket> SwaySocket::open(const QString &path)
{
    const QString address = path.isEmpty() ? qEnvironmentVariable("SWAYSOCK") : path;
    if (address.isEmpty())
        return nullptr;
    std::unique_ptr<SwaySocket> opened(new SwaySocket);
    opened->m_socket.connectToServer(address);
    return opened->m_socket.waitForConnected(connectPatience) ? std::move(opened) : nullptr;
}

SwaySocket::SwaySocket()
{
    connect(&m_socket, &QLocalSocket::readyRead, this, &SwaySocket::readMessages);
    connect(&m_socket, &QLocalSocket::disconnected, this, &SwaySocket::end);
}

SwaySocket::~SwaySocket()
{
    disconnect(&m_socket, nullptr, this, nullptr);
}

bool SwaySocket::isAlive() const
{
    return !m_ended;
}

void SwaySocket::send(Request request, const QByteArray &payload, Reply reply)
{
    if (m_ended) {
        if (reply)
            QMetaObject::invokeMethod(
                this, [reply = std::move(reply)] { reply({}); }, Qt::QueuedConnection);
        return;
    }
    Header header{{}, static_cast<uint32_t>(payload.size()), static_cast<uint32_t>(request)};
    std::memcpy(header.start, magic, sizeof magic);
    m_replies.push_back(std::move(reply));
    m_socket.write(reinterpret_cast<const char *>(&header), sizeof header);
    m_socket.write(payload);
    m_socket.flush();
}

void SwaySocket::subscribe(const QStringList &events, std::function<void(bool)> done)
{
    const QByteArray names
        = QJsonDocument(QJsonArray::fromStringList(events)).toJson(QJsonDocument::Compact);
    send(Request::subscribe, names, [done = std::move(done)](const QJsonDocument &answer) {
        if (done)
            done(answer[u"success"_s].toBool());
    });
}

bool SwaySocket::dispatchUntil(const std::function<bool()> &done, const QDeadlineTimer &deadline)
{
    m_socket.waitForReadyRead(0);
    readMessages();
    while (!done()) {
        if (m_ended || deadline.hasExpired())
            return false;
        m_socket.waitForReadyRead(static_cast<int>(deadline.remainingTime()));
        // Not told by the socket where this was called by what it told.
        readMessages();
    }
    return true;
}

void SwaySocket::readMessages()
{
    Header header;
    while (!m_ended
           && m_socket.peek(reinterpret_cast<char *>(&header), sizeof header) == sizeof header) {
        if (std::memcmp(header.start, magic, sizeof magic) != 0 || header.size > largestMessage) {
            end();
            return;
        }
        if (m_socket.bytesAvailable() < qint64(sizeof header) + header.size)
            return;
        m_socket.skip(sizeof header);
        handleMessage(header.type, QJsonDocument::fromJson(m_socket.read(header.size)));
    }
}

void SwaySocket::handleMessage(uint32_t type, const QJsonDocument &content)
{
    if (type & eventBit) {
        Q_EMIT eventReceived(static_cast<Event>(type), content.object());
        return;
    }
    if (m_replies.empty())
        return;
    const Reply reply = std::move(m_replies.front());
    m_replies.pop_front();
    if (reply)
        reply(content);
}

void SwaySocket::end()
{
    if (std::exchange(m_ended, true))
        return;
    m_socket.abort();
    for (const Reply &reply : std::exchange(m_replies, {})) {
        if (reply)
            reply({});
    }
    Q_EMIT ended();
}

} // namespace Velloro
