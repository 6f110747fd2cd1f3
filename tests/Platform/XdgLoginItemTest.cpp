#include "Platform/Linux/Desktop/XdgLoginItem.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <unistd.h>

namespace Velloro {

namespace {

class XdgLoginItemTest : public ::testing::Test
{
protected:
    XdgLoginItemTest() { qputenv("XDG_CONFIG_HOME", folder.filePath(u"config"_s).toUtf8()); }
    ~XdgLoginItemTest() override { qunsetenv("XDG_CONFIG_HOME"); }

    /// A program that writes its own path into a file beside it.
    [[nodiscard]] QString makeProgram(const QString &name) const
    {
        const QString path = folder.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nprintf '%s|%s' \"$0\" \"$#\" > \"${0%/*}/started\"\n");
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }
    [[nodiscard]] static QByteArray content(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder;
};

TEST_F(XdgLoginItemTest, TheEntryStartsTheProgramWhateverItsFolderIsCalled)
{
    for (const QString &name :
         {u"plain/velloro"_s, u"My Programs/a \"b\" $HOME `c` 100% %f\\d/velloro"_s,
          u"Größe/日本/velloro"_s}) {
        const QString program = makeProgram(name);
        XdgLoginItem item(program);
        ASSERT_TRUE(item.registerItem());
        EXPECT_EQ(XdgLoginItem::entryPath(),
                  folder.filePath(u"config/autostart/velloro.desktop"_s));
        QProcess launcher;
        launcher.start(u"gio"_s, {u"launch"_s, XdgLoginItem::entryPath()});
        if (!launcher.waitForStarted())
            GTEST_SKIP() << "gio is not installed: the entry can't be tried";
        ASSERT_TRUE(launcher.waitForFinished());
        EXPECT_EQ(launcher.exitCode(), 0) << launcher.readAllStandardError().constData();
        const QString started = QFileInfo(program).path() + u"/started"_s;
        ASSERT_TRUE(waitUntil([&] { return !content(started).isEmpty(); }));
        EXPECT_EQ(QString::fromUtf8(content(started)), program + u"|0"_s);
    }
}

TEST_F(XdgLoginItemTest, NamesTheRunningProgramAndGoesWhenSwitchedOff)
{
    XdgLoginItem item;
    EXPECT_TRUE(item.unregisterItem()) << "there was nothing to take back";
    ASSERT_TRUE(item.registerItem());
    const QString self = QFileInfo(u"/proc/self/exe"_s).canonicalFilePath();
    EXPECT_THAT(content(XdgLoginItem::entryPath()).toStdString(),
                ::testing::HasSubstr("Exec=\"" + self.toStdString() + "\"\n"));
    ASSERT_TRUE(item.unregisterItem());
    EXPECT_EQ(QDir(folder.filePath(u"config/autostart"_s)).entryList(QDir::Files), QStringList());
}

TEST_F(XdgLoginItemTest, FollowsAProgramThatWasMovedAndNothingElse)
{
    const QString before = makeProgram(u"before/velloro"_s);
    const QString after = makeProgram(u"after/velloro"_s);
    XdgLoginItem moved(after);
    ASSERT_TRUE(moved.refresh());
    EXPECT_FALSE(QFile::exists(XdgLoginItem::entryPath())) << "it was never switched on";

    ASSERT_TRUE(XdgLoginItem(before).registerItem());
    const QByteArray entry = content(XdgLoginItem::entryPath());
    ASSERT_TRUE(moved.refresh());
    EXPECT_EQ(content(XdgLoginItem::entryPath()), entry) << "another program that is still there";

    QFile::remove(before);
    ASSERT_TRUE(moved.refresh());
    EXPECT_THAT(content(XdgLoginItem::entryPath()).toStdString(),
                ::testing::HasSubstr(after.toStdString()));

    // Switched off in the desktop's own settings.
    QFile file(XdgLoginItem::entryPath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(entry) + "Hidden=true\n");
    file.close();
    ASSERT_TRUE(moved.refresh());
    EXPECT_THAT(content(XdgLoginItem::entryPath()).toStdString(),
                ::testing::HasSubstr(before.toStdString()));
}

TEST_F(XdgLoginItemTest, SaysWhatKeepsItFromTheFolder)
{
    // A file stands where the folder should be: no permission helps, not even the superuser's.
    QFile obstacle(folder.filePath(u"config"_s));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    obstacle.close();
    XdgLoginItem item(makeProgram(u"velloro"_s));
    const LoginItem::Result registered = item.registerItem();
    ASSERT_FALSE(registered);
    EXPECT_THAT(registered.error().localizedDescription.toStdString(),
                ::testing::HasSubstr("autostart"));
    EXPECT_FALSE(XdgLoginItem(folder.filePath(u"gone"_s)).registerItem());
}

} // namespace
} // namespace Velloro
