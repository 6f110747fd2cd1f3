#include "Support/SwayCompositor.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"

#include <QFile>
#include <QStandardPaths>
#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace Velloro {

namespace {

constexpr char config[] = "xwayland enable\n"
                          "output HEADLESS-1 mode 800x600\n";

} // namespace

SwayCompositor::SwayCompositor()
{
    // Its programs are to find nothing of the user's.
    qputenv("XDG_RUNTIME_DIR", m_directory.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", m_directory.path().toLocal8Bit());
    qputenv("SWAYSOCK", path(u"sway.sock"_s).toLocal8Bit());
    qputenv("WAYLAND_DISPLAY", path(u"wayland-1"_s).toLocal8Bit());
    qputenv("WLR_BACKENDS", "headless");
    qputenv("WLR_LIBINPUT_NO_DEVICES", "1");
    qputenv("WLR_RENDERER", "pixman");
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    // A test that crashes leaves no compositor behind.
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

SwayCompositor::~SwayCompositor()
{
    kill();
    for (const char *variable : {"SWAYSOCK", "WAYLAND_DISPLAY"})
        qunsetenv(variable);
}

QStringList SwayCompositor::missing(QStringList programs)
{
    programs << u"sway"_s << u"swaymsg"_s;
    programs.removeIf(
        [](const QString &program) { return !QStandardPaths::findExecutable(program).isEmpty(); });
    if (geteuid() == 0 && QProcess::execute(u"unshare"_s, {u"--user"_s, u"true"_s}) != 0)
        programs << u"user namespaces, since sway is not for root"_s;
    return programs;
}

bool SwayCompositor::start()
{
    QFile file(path(u"config"_s));
    if (!file.open(QIODevice::WriteOnly) || file.write(config) < 0)
        return false;
    file.close();
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"WAYLAND_DISPLAY"_s);
    environment.remove(u"DISPLAY"_s);
    m_process.setProcessEnvironment(environment);
    // It will not run as root.
    QStringList command{u"sway"_s, u"-c"_s, file.fileName()};
    if (geteuid() == 0) {
        command = QStringList{u"unshare"_s, u"--user"_s, u"--map-user=1000"_s,
                              u"--map-group=1000"_s, u"--"_s}
            + command;
    }
    m_process.start(command.takeFirst(), command);
    return waitUntil([&] {
               return m_process.state() == QProcess::NotRunning
                   || (QFile::exists(path(u"sway.sock"_s)) && QFile::exists(path(u"wayland-1"_s)));
           })
        && m_process.state() == QProcess::Running;
}

void SwayCompositor::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

QString SwayCompositor::path(const QString &fileName) const
{
    return m_directory.filePath(fileName);
}

void SwayCompositor::execute(const QString &command)
{
    (void)run(u"swaymsg"_s, {u"exec"_s, command});
}

QByteArray SwayCompositor::run(const QString &program, const QStringList &arguments)
{
    QProcess client;
    client.start(program, arguments);
    client.waitForFinished();
    return client.readAllStandardOutput();
}

} // namespace Velloro
