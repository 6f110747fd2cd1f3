#pragma once

#include <QByteArray>

namespace Velloro {

/// Locks on whole files, by which one program tells another that it uses a file. A lock ends when
/// the file is closed, at the latest with the process, so a crash leaves none behind.
class FileLock
{
public:
    /// Locks the open file if nobody else has, without waiting. False, too, where the file system
    /// has no locks.
    static bool tryLock(int descriptor);
    /// Removes the file unless somebody has it locked, or it is a symbolic link.
    static void removeUnlocked(const QByteArray &path);
};

} // namespace Velloro
