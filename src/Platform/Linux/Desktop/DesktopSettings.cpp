#include "Platform/Linux/Desktop/DesktopSettings.h"

#include "Base/Log.h"
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
         {{QStringLiteral("gnome-control-center"), QStringLiteral("sound")}},
         {{QStringLiteral("gnome-control-center"), QStringLiteral("universal-access")}}},
        {"org.kde.plasmashell",
         {{QStringLiteral("systemsettings"), QStringLiteral("kcm_pulseaudio")},
          {QStringLiteral("systemsettings5"), QStringLiteral("kcm_pulseaudio")}},
         {{QStringLiteral("systemsettings"), QStringLiteral("kcm_access")},
          {QStringLiteral("systemsettings5"), QStringLiteral("kcm_access")}}},
        {"org.xfce.SessionManager",
         // The mixer's fourth page is that of the microphones.
         {{QStringLiteral("pavucontrol"), QStringLiteral("--tab=4")}},
         {{QStringLiteral("xfce4-accessibility-settings")}}},
    };
    return all;
}

QStringList namesOnTheBus()
{
    const QString daemon = QStringLiteral("org.freedesktop.DBus");
    return QDBusConnection::sessionBus()
        .call(DBusCall::make(daemon, QStringLiteral("/org/freedesktop/DBus"), daemon,
                             QStringLiteral("ListNames")),
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
        Log::line(u"Settings", QStringLiteral("Failed to start %1").arg(program));
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
