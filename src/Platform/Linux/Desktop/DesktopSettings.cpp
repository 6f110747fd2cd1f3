#include "Platform/Linux/Desktop/DesktopSettings.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/DBusCall.h"

#include <QDBusConnection>
#include <QProcess>
#include <QStandardPaths>

namespace Velloro {

namespace {

/// The bus answers at once or not at all.
constexpr int busPatienceMilliseconds = 500;

struct Desktop
{
    /// A name on the session bus that its shell holds.
    const char *busName;
    QList<QStringList> microphone;
    QList<QStringList> accessibility;
};

const QList<Desktop> &desktops()
{
    static const QList<Desktop> all{
        {"org.gnome.Shell",
         {{u"gnome-control-center"_s, u"sound"_s}},
         {{u"gnome-control-center"_s, u"universal-access"_s}}},
        {"org.kde.plasmashell",
         {{u"systemsettings"_s, u"kcm_pulseaudio"_s}, {u"systemsettings5"_s, u"kcm_pulseaudio"_s}},
         {{u"systemsettings"_s, u"kcm_access"_s}, {u"systemsettings5"_s, u"kcm_access"_s}}},
        {"org.xfce.SessionManager",
         // The mixer's fourth page is that of the microphones.
         {{u"pavucontrol"_s, u"--tab=4"_s}},
         {{u"xfce4-accessibility-settings"_s}}},
    };
    return all;
}

QStringList namesOnTheBus()
{
    const QString daemon = u"org.freedesktop.DBus"_s;
    return QDBusConnection::sessionBus()
        .call(DBusCall::make(daemon, u"/org/freedesktop/DBus"_s, daemon, u"ListNames"_s),
              QDBus::Block, busPatienceMilliseconds)
        .arguments()
        .value(0)
        .toStringList();
}

} // namespace

bool DesktopSettings::openPage(SettingsPage page)
{
    for (QStringList command : commands(page, namesOnTheBus())) {
        const QString program = QStandardPaths::findExecutable(command.takeFirst());
        if (program.isEmpty())
            continue;
        if (QProcess::startDetached(program, command))
            return true;
        Log::line(u"Settings", u"Failed to start %1"_s.arg(program));
    }
    return false;
}

QList<QStringList> DesktopSettings::commands(SettingsPage page, const QStringList &busNames)
{
    QList<QStringList> found;
    for (const Desktop &desktop : desktops()) {
        if (busNames.contains(QLatin1StringView(desktop.busName)))
            found += page == SettingsPage::microphone ? desktop.microphone : desktop.accessibility;
    }
    return found;
}

} // namespace Velloro
