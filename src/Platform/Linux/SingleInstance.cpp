#include "Platform/Linux/SingleInstance.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QStandardPaths>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace Velloro {

namespace {

constexpr int connectTimeoutMs = 1000;

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
        while (QLocalSocket *socket = m_server.nextPendingConnection())
            socket->deleteLater();
        Q_EMIT activationRequested();
    });
}

SingleInstance::~SingleInstance()
{
    m_server.close();
    if (m_lockFile >= 0)
        ::close(m_lockFile);
}

bool SingleInstance::acquire()
{
    const QString socketPath = runtimePath(QStringLiteral("velloro.socket"));
    m_lockFile = ::open(QFile::encodeName(runtimePath(QStringLiteral("velloro.lock"))).constData(),
                        O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    // Where no lock can be made, a second instance is the lesser evil.
    if (m_lockFile >= 0 && ::flock(m_lockFile, LOCK_EX | LOCK_NB) != 0) {
        QLocalSocket socket;
        socket.connectToServer(socketPath);
        socket.waitForConnected(connectTimeoutMs);
        return false;
    }
    // The socket's file outlives a crash; the lock says that nobody listens on it.
    QLocalServer::removeServer(socketPath);
    m_server.listen(socketPath);
    return true;
}

} // namespace Velloro
