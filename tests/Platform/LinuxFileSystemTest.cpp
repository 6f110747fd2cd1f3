#include "Platform/Linux/Files/LinuxFileSystem.h"

#include "Base/StringLiterals.h"

#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <gtest/gtest.h>

namespace Velloro {
namespace {

class LinuxFileSystemTest : public ::testing::Test
{
protected:
    QString path(const QString &name) const { return directory.filePath(name); }

    void write(const QString &name, const QByteArray &content)
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<none>");
    }

    QTemporaryDir directory;
    LinuxFileSystem files;
    const QString from = u"from ä"_s;
    const QString to = u"to 話"_s;
};

TEST_F(LinuxFileSystemTest, MovesWithoutReplacing)
{
    write(from, "new");
    ASSERT_TRUE(files.moveItem(path(from), path(to)));
    EXPECT_EQ(read(to), "new");
    EXPECT_FALSE(files.fileExists(path(from)));

    write(from, "newer");
    const auto moved = files.moveItem(path(from), path(to));
    ASSERT_FALSE(moved);
    EXPECT_EQ(moved.error().code, EEXIST);
    EXPECT_TRUE(moved.error().localizedDescription.contains(path(to)));
    EXPECT_EQ(read(from), "newer");
    EXPECT_EQ(read(to), "new");
    // A broken link is replaced.
    ASSERT_TRUE(files.removeItem(path(to)));
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), path(to)));
    ASSERT_TRUE(files.moveItem(path(from), path(to)));
    EXPECT_EQ(read(to), "newer");
    EXPECT_EQ(files.moveItem(path(u"no"_s), path(from + to)).error().code, ENOENT);
}

TEST_F(LinuxFileSystemTest, MakesFoldersForTheUserAlone)
{
    const QString deep = path(u"a/b/c"_s);
    ASSERT_TRUE(files.createDirectory(deep));
    ASSERT_TRUE(files.createDirectory(deep));
    EXPECT_TRUE(files.fileExists(deep));
    EXPECT_EQ(QFile::permissions(path(u"a"_s)) & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());
    write(from, "");
    EXPECT_EQ(files.createDirectory(path(from)).error().code, EEXIST);
    EXPECT_EQ(files.createDirectory(path(from) + u"/x"_s).error().code, ENOTDIR);
}

TEST_F(LinuxFileSystemTest, RemovesWhatIsThere)
{
    write(from, "x");
    EXPECT_TRUE(files.removeItem(path(from)));
    EXPECT_FALSE(files.fileExists(path(from)));
    EXPECT_EQ(files.removeItem(path(from)).error().code, ENOENT);
}

TEST_F(LinuxFileSystemTest, KeepsDataInTheXdgDataDirectory)
{
    const QByteArray home = qgetenv("HOME");
    const QByteArray dataHome = qgetenv("XDG_DATA_HOME");
    qputenv("HOME", "/home/somebody");
    qunsetenv("XDG_DATA_HOME");
    EXPECT_EQ(files.applicationSupportDirectory(), u"/home/somebody/.local/share"_s);
    qputenv("XDG_DATA_HOME", "/data");
    EXPECT_EQ(files.applicationSupportDirectory(), u"/data"_s);
    qunsetenv("XDG_DATA_HOME");
    qunsetenv("HOME");
    EXPECT_EQ(files.applicationSupportDirectory(), std::nullopt);
    qputenv("HOME", home);
    if (!dataHome.isNull())
        qputenv("XDG_DATA_HOME", dataHome);
}

} // namespace
} // namespace Velloro
