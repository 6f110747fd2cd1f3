#include "Platform/Linux/Process/SingleInstance.h"

#include "Base/FileLock.h"
#include "Base/Log.h"
#include "Base/StringLiterals.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QStandardPaths>
#include <chrono>
#include <fcntl.h>
#include <thread>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

constexpr auto endLimit = 2s;
/// Between two attempts to get the lock, whose release can't be awaited for a limited time.
constexpr auto retryInterval = 50ms;
/// What a further start says, and what the running instance answers.
constexpr char activation[] = "activate\n";
constexpr char acknowledgement = '+';

QString runtimePath(const QString &fileName)
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation))
        .filePath(fileName);
}

} // namespace

SingleInstance::SingleInstance(QObject *parent)
    : QObject(parent)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] { answer(*socket); });
            answer(*socket);
        }
    });
}

void SingleInstance::answer(QLocalSocket &caller)
{
    if (!caller.canReadLine())
        return;
    const QByteArray line = caller.readLine();
    caller.write(&acknowledgement, 1);
    caller.disconnectFromServer();
    if (line == activation)
        Q_EMIT activationRequested();
    else if (const auto command = HotkeyCommand::read(line))
        Q_EMIT hotkeyCommanded(*command);
}

SingleInstance::~SingleInstance()
{
    m_server.close();
}

void SingleInstance::stopAnswering()
{
    m_server.close();
}

QByteArray SingleInstance::socketPath()
{
    return QFile::encodeName(runtimePath(u"velloro.socket"_s));
}

bool SingleInstance::acquire()
{
    const QString socketPath = QFile::decodeName(SingleInstance::socketPath());
    m_lockFile = FileDescriptor::open(QFile::encodeName(runtimePath(u"velloro.lock"_s)),
                                      O_RDWR | O_CREAT, 0600);
    // Where no lock can be made, a second instance is the lesser evil.
    if (m_lockFile.isOpen() && !FileLock::tryLock(m_lockFile.get())) {
        const QDeadlineTimer deadline(endLimit);
        QLocalSocket socket;
        connect(&socket, &QLocalSocket::connected, &socket,
                [&socket] { socket.write(activation); });
        do {
            if (socket.state() == QLocalSocket::UnconnectedState)
                socket.connectToServer(socketPath);
            const bool isAnswered = socket.state() == QLocalSocket::ConnectedState
                && socket.waitForReadyRead(static_cast<int>(retryInterval.count()));
            if (isAnswered || deadline.hasExpired()) {
                Log::line(u"Velloro", u"Already running"_s);
                return false;
            }
            if (socket.state() != QLocalSocket::ConnectedState)
                std::this_thread::sleep_for(retryInterval);
        } while (!FileLock::tryLock(m_lockFile.get()));
    }
    // The socket's file outlives a crash; the lock says that nobody listens on it.
    QLocalServer::removeServer(socketPath);
    m_server.listen(socketPath);
    return true;
}

} // namespace Velloro
