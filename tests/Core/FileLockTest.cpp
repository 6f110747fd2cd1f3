#include "Base/FileLock.h"

#include "Base/FileDescriptor.h"
#include "Base/StringLiterals.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace Velloro {
namespace {

class FileLockTest : public ::testing::Test
{
protected:
    /// Makes a file; its path, as the system takes it.
    QByteArray make(const QString &name)
    {
        QFile file(directory.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return QFile::encodeName(file.fileName());
    }

    QTemporaryDir directory;
};

TEST_F(FileLockTest, EndsWhenTheFileIsClosed)
{
    const QByteArray path = make(u"file"_s);
    auto holder = FileDescriptor::open(path, O_RDONLY);
    const auto other = FileDescriptor::open(path, O_RDONLY);
    ASSERT_TRUE(holder.isOpen() && other.isOpen());
    EXPECT_TRUE(FileLock::tryLock(holder.get()));
    EXPECT_FALSE(FileLock::tryLock(other.get()));
    {
        const FileDescriptor moved = std::move(holder);
        EXPECT_FALSE(holder.isOpen());
        EXPECT_FALSE(FileLock::tryLock(other.get())) << "still open";
    }
    EXPECT_TRUE(FileLock::tryLock(other.get()));
}

TEST_F(FileLockTest, WhatIsOpenedIsNotInherited)
{
    const auto file = FileDescriptor::open(make(u"file"_s), O_RDONLY);
    EXPECT_EQ(::fcntl(file.get(), F_GETFD), FD_CLOEXEC);
    EXPECT_FALSE(
        FileDescriptor::open(QFile::encodeName(directory.filePath(u"none"_s)), O_RDONLY).isOpen());
}

TEST_F(FileLockTest, RemovesWhatNobodyHasLocked)
{
    const QByteArray unlocked = make(u"unlocked"_s);
    const QByteArray locked = make(u"locked"_s);
    const auto holder = FileDescriptor::open(locked, O_RDONLY);
    ASSERT_TRUE(FileLock::tryLock(holder.get()));
    const QString target = QFile::decodeName(make(u"target"_s));
    const QString link = directory.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(target, link));

    for (const QByteArray &path : {unlocked, locked, QFile::encodeName(link)})
        FileLock::removeUnlocked(path);
    EXPECT_FALSE(QFile::exists(QFile::decodeName(unlocked)));
    EXPECT_TRUE(QFile::exists(QFile::decodeName(locked)));
    EXPECT_TRUE(QFile::exists(target));
    EXPECT_TRUE(QFileInfo(link).isSymLink());
}

} // namespace
} // namespace Velloro
