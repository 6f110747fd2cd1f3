#include "Platform/Linux/Downloads/PartialFile.h"

#include "Platform/Linux/Files/SystemError.h"

#include <QDir>
#include <QFile>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace Velloro {

namespace {

constexpr QLatin1String namePrefix(".velloro-download-");
constexpr QLatin1String nameSuffix(".part");

/// So much is written at most before it is sent to the disk, which keeps the last
/// synchronization short.
constexpr int64_t synchronizationInterval = 32 * 1024 * 1024;

PlatformError writeError(int errorNumber)
{
    return systemError(errorNumber, QStringLiteral("The downloaded data could not be saved"));
}

} // namespace

PartialFile::Result<std::unique_ptr<PartialFile>> PartialFile::create(const QString &directory)
{
    QByteArray path =
        QFile::encodeName(directory + u'/' + namePrefix + QStringLiteral("XXXXXX") + nameSuffix);
    const int descriptor = mkostemps(path.data(), static_cast<int>(nameSuffix.size()), O_CLOEXEC);
    if (descriptor < 0)
        return tl::unexpected(writeError(errno));
    // Where locks are unavailable, the file is merely not safe from a second program's cleaning.
    (void)flock(descriptor, LOCK_EX | LOCK_NB);
    return std::unique_ptr<PartialFile>(new PartialFile(descriptor, std::move(path)));
}

void PartialFile::removeStale(const QString &directory)
{
    const QDir folder(directory);
    const QStringList names = folder.entryList({namePrefix + QLatin1String("*") + nameSuffix},
                                               QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QString &name : names) {
        const QByteArray path = QFile::encodeName(folder.filePath(name));
        const int descriptor = open(path.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
        if (descriptor < 0)
            continue;
        if (flock(descriptor, LOCK_EX | LOCK_NB) == 0)
            unlink(path.constData());
        close(descriptor);
    }
}

PartialFile::PartialFile(int descriptor, QByteArray path)
    : m_descriptor(descriptor)
    , m_path(std::move(path))
{
}

PartialFile::~PartialFile()
{
    unlink(m_path.constData());
    close(m_descriptor);
}

QString PartialFile::path() const
{
    return QFile::decodeName(m_path);
}

PartialFile::Result<void> PartialFile::append(std::span<const char> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(m_descriptor, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return tl::unexpected(writeError(errno));
        }
        m_size += written;
        bytes = bytes.subspan(static_cast<size_t>(written));
    }
    if (m_size - m_synchronizedSize >= synchronizationInterval)
        return synchronize();
    return {};
}

PartialFile::Result<void> PartialFile::synchronize()
{
    if (fsync(m_descriptor) != 0)
        return tl::unexpected(writeError(errno));
    m_synchronizedSize = m_size;
    return {};
}

} // namespace Velloro
