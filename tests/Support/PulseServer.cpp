#include "Support/PulseServer.h"

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
    qputenv("PULSE_COOKIE", path(u"cookie"_qs).toLocal8Bit());
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
    return !QStandardPaths::findExecutable(u"pulseaudio"_qs).isEmpty() &&
           !QStandardPaths::findExecutable(u"pactl"_qs).isEmpty();
}

bool PulseServer::start()
{
    // Modules are loaded in order: when the second socket is there, the first takes connections.
    const QString ready = path(u"ready"_qs);
    QFile::remove(ready);
    QFile::remove(path(u"native"_qs));
    m_process.start(
        u"pulseaudio"_qs,
        {u"-n"_qs, u"--daemonize=no"_qs, u"--exit-idle-time=-1"_qs, u"--use-pid-file=no"_qs,
         u"--realtime=no"_qs, u"--high-priority=no"_qs, u"--disallow-exit=yes"_qs,
         u"--log-level=error"_qs, u"-L"_qs,
         u"module-native-protocol-unix auth-anonymous=1 socket=%1"_qs.arg(path(u"native"_qs)),
         u"-L"_qs, u"module-cli-protocol-unix socket=%1"_qs.arg(ready)});
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
    return "unix:" + path(u"native"_qs).toLocal8Bit();
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
    return run(u"pactl"_qs,
               QStringList{u"load-module"_qs} + moduleAndArguments.split(u' ', Qt::SkipEmptyParts));
}

void PulseServer::unloadModule(const QString &index)
{
    run(u"pactl"_qs, {u"unload-module"_qs, index});
}

QStringList PulseServer::list(const QString &kind)
{
    return run(u"pactl"_qs, {u"list"_qs, u"short"_qs, kind}).split(u'\n', Qt::SkipEmptyParts);
}

QProcessEnvironment PulseServer::environment() const
{
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const char *variable : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "PULSE_RUNTIME_PATH",
                                 "PULSE_STATE_PATH"}) {
        environment.insert(QString::fromLatin1(variable), m_directory.path());
    }
    environment.insert(u"PULSE_SERVER"_qs, QString::fromLocal8Bit(address()));
    environment.insert(u"PULSE_COOKIE"_qs, path(u"cookie"_qs));
    environment.insert(u"LC_ALL"_qs, u"C"_qs);
    environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_qs);
    environment.remove(u"DISPLAY"_qs);
    return environment;
}

} // namespace Velloro
