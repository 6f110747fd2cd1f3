#include "Base/FileLock.h"

#include "Base/FileDescriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace Velloro {

bool FileLock::tryLock(int descriptor)
{
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

void FileLock::removeUnlocked(const QByteArray &path)
{
    const auto file = FileDescriptor::open(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    if (file.isOpen() && tryLock(file.get()))
        ::unlink(path.constData());
}

} // namespace Velloro
