#pragma once

#include "Base/StringLiterals.h"
#include "Platform/FileSystem.h"

#include <QHash>
#include <QSet>

namespace Velloro {

/// A file system of names alone. The error of an operation on a path is scripted by that path.
class InMemoryFileSystem : public FileSystem
{
public:
    std::optional<QString> supportDirectory = u"/home/user/.local/share"_s;
    QSet<QString> files;
    QSet<QString> directories;
    QHash<QString, PlatformError> removeErrors;
    /// By destination.
    QHash<QString, PlatformError> moveErrors;

    std::optional<QString> applicationSupportDirectory() const override { return supportDirectory; }

    bool fileExists(const QString &path) const override
    {
        return files.contains(path) || directories.contains(path);
    }

    Result createDirectory(const QString &path) override
    {
        directories.insert(path);
        return {};
    }

    Result removeItem(const QString &path) override
    {
        if (const auto error = removeErrors.constFind(path); error != removeErrors.constEnd())
            return tl::unexpected(*error);
        if (!files.remove(path))
            return tl::unexpected(PlatformError{2, u"No such file"_s});
        return {};
    }

    Result moveItem(const QString &from, const QString &to) override
    {
        if (const auto error = moveErrors.constFind(to); error != moveErrors.constEnd())
            return tl::unexpected(*error);
        if (fileExists(to))
            return tl::unexpected(PlatformError{17, u"File exists"_s});
        if (!files.remove(from))
            return tl::unexpected(PlatformError{2, u"No such file"_s});
        files.insert(to);
        return {};
    }
};

} // namespace Velloro
