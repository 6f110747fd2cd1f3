#include "Platform/Linux/Desktop/DesktopSettings.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"

#include <QDBusConnection>
#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>

namespace Velloro {
namespace {

/// Settings programs that write down how they were started, on a desktop of the test's choice.
class DesktopSettingsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!bus.isConnected())
            GTEST_SKIP() << "there is no session bus";
        oldPath = qgetenv("PATH");
        qputenv("PATH", directory.path().toLocal8Bit() + ":/bin:/usr/bin");
    }
    void TearDown() override
    {
        qputenv("PATH", oldPath);
        for (const QString &name : taken)
            bus.unregisterService(name);
    }
    void install(const char *name)
    {
        QFile program(directory.filePath(QLatin1StringView(name)));
        ASSERT_TRUE(program.open(QIODevice::WriteOnly));
        program.write("#!/bin/sh\necho \"" + QByteArray(name) + " $*\" > '"
                      + directory.filePath(u"new"_s).toLocal8Bit() + "'\nmv '"
                      + directory.filePath(u"new"_s).toLocal8Bit() + "' '"
                      + directory.filePath(u"started"_s).toLocal8Bit() + "'\n");
        program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void runDesktop(const QString &name)
    {
        ASSERT_TRUE(bus.registerService(name));
        taken << name;
    }
    std::string started()
    {
        QFile file(directory.filePath(u"started"_s));
        if (!waitUntil([&] { return file.exists(); }) || !file.open(QIODevice::ReadOnly))
            return "nothing";
        const std::string line = file.readAll().trimmed().toStdString();
        file.remove();
        return line;
    }

    QDBusConnection bus = QDBusConnection::sessionBus();
    QTemporaryDir directory;
    QByteArray oldPath;
    QStringList taken;
    DesktopSettings settings;
};

TEST_F(DesktopSettingsTest, opensThePagesOfTheDesktopThatIsRunning)
{
    EXPECT_FALSE(settings.openPage(SettingsPage::microphone)) << "no desktop is running";

    install("xfce4-accessibility-settings");
    install("systemsettings5");
    runDesktop(u"org.xfce.SessionManager"_s);
    ASSERT_TRUE(settings.openPage(SettingsPage::accessibility));
    EXPECT_EQ(started(), "xfce4-accessibility-settings");

    runDesktop(u"org.kde.plasmashell"_s);
    ASSERT_TRUE(settings.openPage(SettingsPage::microphone));
    EXPECT_EQ(started(), "systemsettings5 kcm_pulseaudio") << "the older name of the program";

    runDesktop(u"org.gnome.Shell"_s);
    ASSERT_TRUE(settings.openPage(SettingsPage::microphone));
    EXPECT_EQ(started(), "systemsettings5 kcm_pulseaudio") << "the first that is installed";
    install("gnome-control-center");
    ASSERT_TRUE(settings.openPage(SettingsPage::accessibility));
    EXPECT_EQ(started(), "gnome-control-center universal-access");
    ASSERT_TRUE(settings.openPage(SettingsPage::microphone));
    EXPECT_EQ(started(), "gnome-control-center sound");
}

} // namespace
} // namespace Velloro
