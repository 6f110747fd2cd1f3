#include "Support/PulseServer.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"

#include <QFile>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <csignal>
#include <sys/prctl.h>

namespace Velloro {

PulseServer::PulseServer()
{
    // The clients in this process keep no cookie in the user's home either.
    qputenv("PULSE_COOKIE", path(u"cookie"_s).toLocal8Bit());
    m_process.setProcessEnvironment(environment());
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    // A test that crashes leaves no server behind.
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

PulseServer::~PulseServer()
{
    resume();
    kill();
}

bool PulseServer::isInstalled()
{
    return !QStandardPaths::findExecutable(u"pulseaudio"_s).isEmpty()
        && !QStandardPaths::findExecutable(u"pactl"_s).isEmpty();
}

bool PulseServer::start()
{
    // Modules are loaded in order: when the second socket is there, the first takes connections.
    const QString ready = path(u"ready"_s);
    QFile::remove(ready);
    QFile::remove(path(u"native"_s));
    m_process.start(
        u"pulseaudio"_s,
        {u"-n"_s, u"--daemonize=no"_s, u"--exit-idle-time=-1"_s, u"--use-pid-file=no"_s,
         u"--realtime=no"_s, u"--high-priority=no"_s, u"--disallow-exit=yes"_s,
         u"--log-level=error"_s, u"-L"_s,
         u"module-native-protocol-unix auth-anonymous=1 socket=%1"_s.arg(path(u"native"_s)),
         u"-L"_s, u"module-cli-protocol-unix socket=%1"_s.arg(ready)});
    return waitUntil(
               [&] { return QFile::exists(ready) || m_process.state() == QProcess::NotRunning; })
        && m_process.state() == QProcess::Running;
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
    return "unix:" + path(u"native"_s).toLocal8Bit();
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
    return run(u"pactl"_s,
               QStringList{u"load-module"_s} + moduleAndArguments.split(u' ', Qt::SkipEmptyParts));
}

void PulseServer::unloadModule(const QString &index)
{
    run(u"pactl"_s, {u"unload-module"_s, index});
}

QStringList PulseServer::list(const QString &kind)
{
    return run(u"pactl"_s, {u"list"_s, u"short"_s, kind}).split(u'\n', Qt::SkipEmptyParts);
}

QProcessEnvironment PulseServer::environment() const
{
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const char *variable :
         {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH"}) {
        environment.insert(QString::fromLatin1(variable), m_directory.path());
    }
    environment.insert(u"PULSE_SERVER"_s, QString::fromLocal8Bit(address()));
    environment.insert(u"PULSE_COOKIE"_s, path(u"cookie"_s));
    environment.insert(u"LC_ALL"_s, u"C"_s);
    environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
    environment.remove(u"DISPLAY"_s);
    return environment;
}

} // namespace Velloro
