#pragma once

#include "Platform/UserDefaults.h"

#include <QJsonObject>
#include <QString>
#include <ctime>
#include <optional>
#include <sys/types.h>

namespace Velloro {

/// The settings as one JSON object in one file of the user's configuration directory.
///
/// Booleans, integers, texts, lists of texts and maps of texts are JSON's own; bytes are written as
/// {"$data": "<base64>"}, and a map with a key that starts with "$" as {"$map": {…}}, so that the
/// two are never confused. Keys and values that this version does not know are kept as they are.
///
/// The file is read once, at construction. A write replaces it atomically (temporary file in the
/// same directory, synchronized, renamed), for the user's eyes alone; where the path is a symbolic
/// link, the file that it points to is replaced. An assignment that changes nothing in a file that
/// is as we left it writes nothing. A file that can't be read as settings is set aside as
/// "<name>.damaged-YYYYMMDD-HHMMSS", and the program starts without settings; a copy of it is kept
/// under such a name when a value is about to be replaced by one of another type.
class JsonUserDefaults : public UserDefaults
{
public:
    /// "Velloro/settings.json" in the user's configuration directory.
    [[nodiscard]] static QString defaultPath();

    explicit JsonUserDefaults(const QString &path = defaultPath());

    [[nodiscard]] std::optional<DefaultsValue> value(const QString &key) const override;
    void setValue(const QString &key, const DefaultsValue &value) override;
    void removeValue(const QString &key) override;
    void removeKeptCopies() override;

private:
    /// What tells one state of a file from another without reading it.
    struct FileStamp
    {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0;
        timespec modified{};

        friend bool operator==(const FileStamp &left, const FileStamp &right)
        {
            return left.device == right.device && left.inode == right.inode
                && left.size == right.size && left.modified.tv_sec == right.modified.tv_sec
                && left.modified.tv_nsec == right.modified.tv_nsec;
        }
    };

    [[nodiscard]] static std::optional<FileStamp> stampOf(const QString &path);

    void load();
    /// Keeps the file as it is now beside itself, before a value that was of no use is replaced.
    void keepMistaken(const QString &key);
    void save();
    /// The reason why it can't be written, or nothing.
    [[nodiscard]] std::optional<QString> write();

    QString m_path;
    QJsonObject m_object;
    /// The file as we last read or wrote it; nothing when memory holds more than the file does.
    std::optional<FileStamp> m_stored;
    /// A file that has to be set aside before the next write, because it could not be until now.
    bool m_mustSetAside = false;
    /// The file with values of the wrong types has been kept.
    bool m_hasKept = false;
};

} // namespace Velloro
