#pragma once

#include "Platform/FileSystem.h"

namespace Velloro {

/// The files of this machine. The application-support directory is the XDG data directory.
class LinuxFileSystem : public FileSystem
{
public:
    [[nodiscard]] std::optional<QString> applicationSupportDirectory() const override;
    [[nodiscard]] bool fileExists(const QString &path) const override;
    /// Directories made here are the user's alone.
    Result createDirectory(const QString &path) override;
    /// Removes a file, a link or an empty directory.
    Result removeItem(const QString &path) override;
    Result moveItem(const QString &from, const QString &to) override;
};

} // namespace Velloro
