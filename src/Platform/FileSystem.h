#pragma once

#include "Platform/PlatformError.h"

#include <QString>
#include <optional>
#include <tl/expected.hpp>

namespace Velloro {

/// The few file operations that the model store needs. Paths are absolute. Any thread.
class FileSystem
{
public:
    using Result = tl::expected<void, PlatformError>;

    virtual ~FileSystem() = default;

    /// The current user's application-support directory; nothing when it can't be determined.
    [[nodiscard]] virtual std::optional<QString> applicationSupportDirectory() const = 0;
    /// Whether a file or directory exists at `path`.
    [[nodiscard]] virtual bool fileExists(const QString &path) const = 0;
    /// Creates a directory with its parents; one that exists is a success.
    virtual Result createDirectory(const QString &path) = 0;
    virtual Result removeItem(const QString &path) = 0;
    /// Moves a file; fails when something exists at `to`. Atomic on one file system.
    virtual Result moveItem(const QString &from, const QString &to) = 0;
};

} // namespace Velloro
