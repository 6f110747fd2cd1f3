#include "Platform/Linux/Process/SingleInstance.h"

#include "Base/Log.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QStandardPaths>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

constexpr auto endLimit = 2s;
/// Between two attempts to get the lock, whose release can't be awaited for a limited time.
constexpr auto retryInterval = 50ms;
/// What a running instance answers.
constexpr char acknowledgement = '+';

QString runtimePath(const QString &fileName)
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation)).filePath(fileName);
}

} // namespace

SingleInstance::SingleInstance(QObject *parent)
    : QObject(parent)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            socket->write(&acknowledgement, 1);
            socket->disconnectFromServer();
        }
        Q_EMIT activationRequested();
    });
}

SingleInstance::~SingleInstance()
{
    m_server.close();
    if (m_lockFile >= 0)
        ::close(m_lockFile);
}

bool SingleInstance::lock() const
{
    return ::flock(m_lockFile, LOCK_EX | LOCK_NB) == 0;
}

void SingleInstance::stopAnswering()
{
    m_server.close();
}

bool SingleInstance::acquire()
{
    const QString socketPath = runtimePath(QStringLiteral("velloro.socket"));
    m_lockFile = ::open(QFile::encodeName(runtimePath(QStringLiteral("velloro.lock"))).constData(),
                        O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    // Where no lock can be made, a second instance is the lesser evil.
    if (m_lockFile >= 0 && !lock()) {
        const QDeadlineTimer deadline(endLimit);
        QLocalSocket socket;
        do {
            if (socket.state() == QLocalSocket::UnconnectedState)
                socket.connectToServer(socketPath);
            const bool isAnswered = socket.state() == QLocalSocket::ConnectedState
                && socket.waitForReadyRead(static_cast<int>(retryInterval.count()));
            if (isAnswered || deadline.hasExpired()) {
                Log::line(u"Velloro", QStringLiteral("Already running"));
                return false;
            }
            if (socket.state() != QLocalSocket::ConnectedState)
                std::this_thread::sleep_for(retryInterval);
        } while (!lock());
    }
    // The socket's file outlives a crash; the lock says that nobody listens on it.
    QLocalServer::removeServer(socketPath);
    m_server.listen(socketPath);
    return true;
}

} // namespace Velloro
