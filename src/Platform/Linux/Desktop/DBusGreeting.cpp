#include "Platform/Linux/Desktop/DBusGreeting.h"

#include "Base/StringLiterals.h"

#include <QStringList>
#include <unistd.h>

namespace Velloro {

namespace {

const QString pathKey = u"path="_s;
const QString abstractKey = u"abstract="_s;
const QString localTransport = u"unix:"_s;

} // namespace

DBusGreeting::DBusGreeting(const QString &address, std::chrono::milliseconds limit, QObject *parent)
    : QObject(parent)
{
    m_limit.setSingleShot(true);
    connect(&m_limit, &QTimer::timeout, this, [this] { finish(false); });
    connect(&m_socket, &QLocalSocket::connected, this, [this] {
        // The first words of the authentication; the daemon has something to say to them in any
        // case.
        QByteArray words(1, '\0');
        words += "AUTH EXTERNAL " + QByteArray::number(getuid()).toHex() + "\r\n";
        m_socket.write(words);
    });
    connect(&m_socket, &QLocalSocket::readyRead, this, [this] { finish(true); });
    // Queued: what fails at once does so within the constructor.
    connect(
        &m_socket, &QLocalSocket::errorOccurred, this, [this] { finish(false); },
        Qt::QueuedConnection);
    m_limit.start(limit);
    connectToSocket(address);
}

bool DBusGreeting::waitForAnswer(std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    while (!m_isFinished) {
        const int rest = static_cast<int>(deadline.remainingTime());
        const bool isConnecting = m_socket.state() == QLocalSocket::ConnectingState;
        if (rest <= 0
            || !(isConnecting ? m_socket.waitForConnected(rest) : m_socket.waitForReadyRead(rest)))
            break;
    }
    return m_isAnswered;
}

void DBusGreeting::connectToSocket(const QString &address)
{
    for (const QString &entry : address.split(u';')) {
        if (!entry.startsWith(localTransport))
            continue;
        for (const QString &option : entry.mid(localTransport.size()).split(u',')) {
            const bool isAbstract = option.startsWith(abstractKey);
            if (!isAbstract && !option.startsWith(pathKey))
                continue;
            const QString escaped = option.mid(isAbstract ? abstractKey.size() : pathKey.size());
            if (isAbstract)
                m_socket.setSocketOptions(QLocalSocket::AbstractNamespaceOption);
            m_socket.connectToServer(
                QString::fromLocal8Bit(QByteArray::fromPercentEncoding(escaped.toLatin1())));
            return;
        }
    }
    m_limit.start(0);
}

void DBusGreeting::finish(bool isAnswered)
{
    if (m_isFinished)
        return;
    m_isFinished = true;
    m_isAnswered = isAnswered;
    m_limit.stop();
    m_socket.abort();
    Q_EMIT finished(isAnswered);
}

} // namespace Velloro
