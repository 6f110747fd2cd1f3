#include "Platform/Linux/Files/LinuxFileSystem.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Files/SystemError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Velloro {

namespace {

/// Renames unless something is at `to`; false with `errno` set when that failed.
bool renameExclusively(const QByteArray &from, const QByteArray &to)
{
    if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // The file system has no such rename. A second name is given exclusively everywhere where
    // there can be one.
    if (link(from.constData(), to.constData()) == 0)
        return unlink(from.constData()) == 0;
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK)
        return false;
    struct stat status = {};
    if (lstat(to.constData(), &status) == 0) {
        errno = EEXIST;
        return false;
    }
    return errno == ENOENT && rename(from.constData(), to.constData()) == 0;
}

} // namespace

std::optional<QString> LinuxFileSystem::applicationSupportDirectory() const
{
    const QString directory
        = QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    // Without a home directory Qt takes the root for it, where nothing of a user's belongs.
    if (directory.isEmpty() || directory == u"/.local/share")
        return std::nullopt;
    return directory;
}

bool LinuxFileSystem::fileExists(const QString &path) const
{
    return QFileInfo::exists(path);
}

FileSystem::Result LinuxFileSystem::createDirectory(const QString &path)
{
    const QString cleaned = QDir::cleanPath(path);
    if (mkdir(QFile::encodeName(cleaned).constData(), 0700) == 0)
        return {};
    int error = errno;
    if (error == ENOENT) {
        const QString parent = QFileInfo(cleaned).path();
        if (parent != cleaned) {
            if (const Result made = createDirectory(parent); !made)
                return made;
            if (mkdir(QFile::encodeName(cleaned).constData(), 0700) == 0)
                return {};
            error = errno;
        }
    }
    if (error == EEXIST && QFileInfo(cleaned).isDir())
        return {};
    return tl::unexpected(
        systemError(error, u"The folder “%1” could not be created"_s.arg(cleaned)));
}

FileSystem::Result LinuxFileSystem::removeItem(const QString &path)
{
    if (std::remove(QFile::encodeName(path).constData()) == 0)
        return {};
    return tl::unexpected(systemError(errno, u"“%1” could not be removed"_s.arg(path)));
}

FileSystem::Result LinuxFileSystem::moveItem(const QString &from, const QString &to)
{
    // With a broken link no file is lost.
    const QFileInfo destination(to);
    if (destination.isSymLink() && !destination.exists())
        std::remove(QFile::encodeName(to).constData());
    if (renameExclusively(QFile::encodeName(from), QFile::encodeName(to)))
        return {};
    return tl::unexpected(systemError(errno, u"“%1” could not be moved to “%2”"_s.arg(from, to)));
}

} // namespace Velloro
