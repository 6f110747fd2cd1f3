#pragma once

#include "Base/FileDescriptor.h"
#include "Platform/PlatformError.h"

#include <QString>
#include <cstdint>
#include <memory>
#include <span>
#include <tl/expected.hpp>

namespace Velloro {

/// A hidden temporary file that a download is written to, readable by the user alone.
///
/// The file is removed with the object, unless it was moved away before. It is locked as long as
/// the object lives, so that what a crashed run left can be told from what is in use. One thread at
/// a time.
class PartialFile
{
public:
    template <typename T>
    using Result = tl::expected<T, PlatformError>;

    [[nodiscard]] static Result<std::unique_ptr<PartialFile>> create(const QString &directory);
    /// Removes the partial files of runs that did not come to remove them.
    static void removeStale(const QString &directory);

    ~PartialFile();
    PartialFile(const PartialFile &) = delete;
    PartialFile &operator=(const PartialFile &) = delete;

    [[nodiscard]] QString path() const;
    /// Bytes written so far.
    [[nodiscard]] int64_t size() const { return m_size; }

    [[nodiscard]] Result<void> append(std::span<const char> bytes);
    /// Returns when everything that was written is on the disk.
    [[nodiscard]] Result<void> synchronize();

private:
    PartialFile(FileDescriptor file, QByteArray path);

    FileDescriptor m_file;
    QByteArray m_path;
    int64_t m_size = 0;
    int64_t m_synchronizedSize = 0;
};

} // namespace Velloro
