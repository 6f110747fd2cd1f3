#include "Platform/Linux/Downloads/PartialFile.h"

#include "Base/FileLock.h"
#include "Base/StringLiterals.h"
#include "Platform/Linux/Files/SystemError.h"

#include <QDir>
#include <QFile>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
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
    return systemError(errorNumber, u"The downloaded data could not be saved"_s);
}

} // namespace

PartialFile::Result<std::unique_ptr<PartialFile>> PartialFile::create(const QString &directory)
{
    QByteArray path = QFile::encodeName(directory + u'/' + namePrefix + u"XXXXXX"_s + nameSuffix);
    FileDescriptor file(mkostemps(path.data(), static_cast<int>(nameSuffix.size()), O_CLOEXEC));
    if (!file.isOpen())
        return tl::unexpected(writeError(errno));
    // Where locks are unavailable, the file is merely not safe from a second program's cleaning.
    FileLock::tryLock(file.get());
    return std::unique_ptr<PartialFile>(new PartialFile(std::move(file), std::move(path)));
}

void PartialFile::removeStale(const QString &directory)
{
    const QDir folder(directory);
    const QStringList names = folder.entryList({namePrefix + "*"_L1 + nameSuffix},
                                               QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QString &name : names)
        FileLock::removeUnlocked(QFile::encodeName(folder.filePath(name)));
}

PartialFile::PartialFile(FileDescriptor file, QByteArray path)
    : m_file(std::move(file))
    , m_path(std::move(path))
{
}

PartialFile::~PartialFile()
{
    unlink(m_path.constData());
}

QString PartialFile::path() const
{
    return QFile::decodeName(m_path);
}

PartialFile::Result<void> PartialFile::append(std::span<const char> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(m_file.get(), bytes.data(), bytes.size());
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
    if (fsync(m_file.get()) != 0)
        return tl::unexpected(writeError(errno));
    m_synchronizedSize = m_size;
    return {};
}

} // namespace Velloro
