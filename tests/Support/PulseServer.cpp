#include "Support/PulseServer.h"

#include "Support/WaitUntil.h"

#include <QFile>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <csignal>

namespace Velloro {

PulseServer::PulseServer()
{
    // The clients in this process keep no cookie in the user's home either.
    qputenv("PULSE_COOKIE", path(QStringLiteral("cookie")).toLocal8Bit());
    m_process.setProcessEnvironment(environment());
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

PulseServer::~PulseServer()
{
    resume();
    kill();
}

bool PulseServer::isInstalled()
{
    return !QStandardPaths::findExecutable(QStringLiteral("pulseaudio")).isEmpty()
        && !QStandardPaths::findExecutable(QStringLiteral("pactl")).isEmpty();
}

bool PulseServer::start()
{
    // Modules are loaded in order: when the second socket is there, the first takes connections.
    const QString ready = path(QStringLiteral("ready"));
    QFile::remove(ready);
    QFile::remove(path(QStringLiteral("native")));
    m_process.start(QStringLiteral("pulseaudio"),
                    {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
                     QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--use-pid-file=no"),
                     QStringLiteral("--realtime=no"), QStringLiteral("--high-priority=no"),
                     QStringLiteral("--disallow-exit=yes"), QStringLiteral("--log-level=error"),
                     QStringLiteral("-L"),
                     QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=%1")
                         .arg(path(QStringLiteral("native"))),
                     QStringLiteral("-L"),
                     QStringLiteral("module-cli-protocol-unix socket=%1").arg(ready)});
    return waitUntil([&] {
        return QFile::exists(ready) || m_process.state() == QProcess::NotRunning;
    }) && m_process.state() == QProcess::Running;
}

void PulseServer::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

void PulseServer::suspend()
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP);
}

void PulseServer::resume()
{
    if (m_process.state() == QProcess::Running)
        ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT);
}

QByteArray PulseServer::address() const
{
    return "unix:" + path(QStringLiteral("native")).toLocal8Bit();
}

QString PulseServer::path(const QString &fileName) const
{
    return m_directory.filePath(fileName);
}

QString PulseServer::run(const QString &program, const QStringList &arguments)
{
    QProcess client;
    client.setProcessEnvironment(environment());
    client.start(program, arguments);
    client.waitForFinished();
    return QString::fromUtf8(client.readAllStandardOutput()).trimmed();
}

QString PulseServer::loadModule(const QString &moduleAndArguments)
{
    return run(QStringLiteral("pactl"),
               QStringList{QStringLiteral("load-module")}
                   + moduleAndArguments.split(u' ', Qt::SkipEmptyParts));
}

void PulseServer::unloadModule(const QString &index)
{
    run(QStringLiteral("pactl"), {QStringLiteral("unload-module"), index});
}

QStringList PulseServer::list(const QString &kind)
{
    return run(QStringLiteral("pactl"), {QStringLiteral("list"), QStringLiteral("short"), kind})
        .split(u'\n', Qt::SkipEmptyParts);
}

QProcessEnvironment PulseServer::environment() const
{
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const char *variable : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "PULSE_RUNTIME_PATH",
                                 "PULSE_STATE_PATH"}) {
        environment.insert(QString::fromLatin1(variable), m_directory.path());
    }
    environment.insert(QStringLiteral("PULSE_SERVER"), QString::fromLocal8Bit(address()));
    environment.insert(QStringLiteral("PULSE_COOKIE"), path(QStringLiteral("cookie")));
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    environment.remove(QStringLiteral("DISPLAY"));
    return environment;
}

} // namespace Velloro
