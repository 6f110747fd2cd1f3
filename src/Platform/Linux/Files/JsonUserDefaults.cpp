#include "Platform/Linux/Files/JsonUserDefaults.h"

#include "Base/FileDescriptor.h"
#include "Base/FileLock.h"
#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Platform/Linux/Files/LinuxFileSystem.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <tl/expected.hpp>
#include <unistd.h>

namespace Velloro {

namespace {

constexpr auto logTag = u"UserDefaults";
const QString dataTag = u"$data"_s;
const QString mapTag = u"$map"_s;
/// What follows the file's name in the names of temporary files; six random characters come after.
const QString temporaryInfix = u".part-"_s;
/// What follows it in the names of files that were set aside; the moment comes after.
const QString asideInfix = u".damaged-"_s;
/// Settings and 50 transcripts are far smaller; what is bigger is not ours.
constexpr qint64 maximumFileSize = 64 * 1024 * 1024;
constexpr int maximumLinkDepth = 40;
constexpr QFile::Permissions ownersPermissions = QFile::ReadOwner | QFile::WriteOwner
    | QFile::ReadUser | QFile::WriteUser;

QString directoryOf(const QString &path)
{
    return QFileInfo(path).absolutePath();
}

/// The file that `path` stands for once symbolic links are followed, whether or not it exists;
/// nothing when the links lead nowhere.
std::optional<QString> followLinks(QString path)
{
    for (int depth = 0; depth < maximumLinkDepth; ++depth) {
        std::error_code error;
        const auto link
            = std::filesystem::read_symlink(QFile::encodeName(path).toStdString(), error);
        if (error)
            return path;
        path = QDir(directoryOf(path))
                   .absoluteFilePath(QFile::decodeName(QByteArray::fromStdString(link.string())));
    }
    return std::nullopt;
}

std::optional<QStringList> decodeList(const QJsonArray &array)
{
    QStringList list;
    for (const QJsonValue &member : array) {
        if (!member.isString())
            return std::nullopt;
        list.append(member.toString());
    }
    return list;
}

std::optional<QMap<QString, QString>> decodeMap(const QJsonObject &object)
{
    QMap<QString, QString> map;
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (!member.value().isString())
            return std::nullopt;
        map.insert(member.key(), member.value().toString());
    }
    return map;
}

bool hasTag(const QStringList &keys)
{
    return std::ranges::any_of(keys, [](const QString &key) { return key.startsWith(u'$'); });
}

std::optional<DefaultsValue> decodeObject(const QJsonObject &object)
{
    const QStringList keys = object.keys();
    if (!hasTag(keys)) {
        if (auto map = decodeMap(object))
            return DefaultsValue(*std::move(map));
        return std::nullopt;
    }
    if (keys == QStringList{dataTag} && object.value(dataTag).isString()) {
        const auto bytes = QByteArray::fromBase64Encoding(object.value(dataTag).toString().toUtf8(),
                                                          QByteArray::AbortOnBase64DecodingErrors);
        if (bytes)
            return DefaultsValue(*bytes);
    } else if (keys == QStringList{mapTag} && object.value(mapTag).isObject()) {
        if (auto map = decodeMap(object.value(mapTag).toObject()))
            return DefaultsValue(*std::move(map));
    }
    return std::nullopt;
}

std::optional<DefaultsValue> decode(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return DefaultsValue(value.toBool());
    case QJsonValue::Double: {
        // `toInteger` answers with its argument when the number is no 64-bit integer.
        const qint64 integer = value.toInteger(0);
        if (integer == 0 && value.toInteger(1) != 0)
            return std::nullopt;
        return DefaultsValue(static_cast<int64_t>(integer));
    }
    case QJsonValue::String:
        return DefaultsValue(value.toString());
    case QJsonValue::Array:
        if (auto list = decodeList(value.toArray()))
            return DefaultsValue(*std::move(list));
        return std::nullopt;
    case QJsonValue::Object:
        return decodeObject(value.toObject());
    default:
        return std::nullopt;
    }
}

struct Encoder
{
    QJsonValue operator()(bool value) const { return value; }
    QJsonValue operator()(int64_t value) const { return static_cast<qint64>(value); }
    QJsonValue operator()(const QString &value) const { return value; }
    QJsonValue operator()(const QStringList &value) const
    {
        return QJsonArray::fromStringList(value);
    }
    QJsonValue operator()(const QMap<QString, QString> &value) const
    {
        QJsonObject object;
        for (auto member = value.begin(); member != value.end(); ++member)
            object.insert(member.key(), member.value());
        return hasTag(object.keys()) ? QJsonObject{{mapTag, object}} : object;
    }
    QJsonValue operator()(const QByteArray &value) const
    {
        return QJsonObject{{dataTag, QString::fromLatin1(value.toBase64())}};
    }
};

/// The paths of the files beside `target` whose names go on with `infix` and what `rest` matches.
QStringList filesBeside(const QString &target, const QString &infix, const QString &rest = u".*"_s)
{
    const QFileInfo info(target);
    const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(info.fileName() + infix) + rest));
    const QDir directory(info.absolutePath());
    QStringList paths;
    for (const QString &name : directory.entryList(QDir::Files | QDir::Hidden | QDir::NoSymLinks)) {
        if (pattern.match(name).hasMatch())
            paths << directory.filePath(name);
    }
    return paths;
}

/// Removes what a killed process left beside `target`. A file that another process is writing at
/// this moment is locked by it, and stays.
void removeLeftovers(const QString &target)
{
    for (const QString &path : filesBeside(target, temporaryInfix))
        FileLock::removeUnlocked(QFile::encodeName(path));
}

/// Writes `content` to a new file beside `target`, for the user's eyes alone, and puts it in its
/// place. The reason of a failure, or nothing.
///
/// A QSaveFile would do the same, but what a killed process leaves of it bears a name that a user's
/// own copy could have as well.
std::optional<QString> replaceFile(const QString &target, const QByteArray &content)
{
    QTemporaryFile file(target + temporaryInfix + u"XXXXXX"_s);
    if (!file.open())
        return file.errorString();
    // The lock tells this file from one that a killed process left.
    FileLock::tryLock(file.handle());
    if (file.write(content) != content.size() || !file.flush())
        return file.errorString();
    if (::fsync(file.handle()) != 0
        || ::rename(QFile::encodeName(file.fileName()), QFile::encodeName(target)) != 0)
        return qt_error_string(errno);
    file.setAutoRemove(false);

    // The rename itself is on disk when the directory is; some file systems refuse to say so.
    const FileDescriptor directory
        = FileDescriptor::open(QFile::encodeName(directoryOf(target)), O_RDONLY | O_DIRECTORY);
    if (directory.isOpen() && ::fsync(directory.get()) != 0 && errno != EINVAL && errno != ENOTSUP)
        return qt_error_string(errno);
    return std::nullopt;
}

/// Gives the file another name, or with `copy` makes a copy of it, without overwriting another one.
/// Returns the new path, or the reason of the failure.
tl::expected<QString, QString> setAside(const QString &target, bool copy = false)
{
    const QString base = target + asideInfix
        + QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss");
    QString aside = base;
    for (int attempt = 2; QFileInfo::exists(aside); ++attempt)
        aside = u"%1-%2"_s.arg(base).arg(attempt);
    QFile file(target);
    if (copy ? file.copy(aside) : file.rename(aside))
        return aside;
    return tl::unexpected(file.errorString());
}

/// The object that the file holds; an empty file holds an empty one. Else what is wrong with it.
tl::expected<QJsonObject, QString> read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return tl::unexpected(file.errorString());
    if (file.size() > maximumFileSize)
        return tl::unexpected(u"it is too big"_s);
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return tl::unexpected(file.errorString());
    if (bytes.isEmpty()) {
        Log::line(logTag, u"%1 is empty"_s.arg(path));
        return {};
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        return tl::unexpected(error.errorString());
    if (!document.isObject())
        return tl::unexpected(u"it does not hold an object"_s);
    return document.object();
}

} // namespace

QString JsonUserDefaults::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + u"/Velloro/settings.json"_s;
}

JsonUserDefaults::JsonUserDefaults(const QString &path)
    : m_path(QFileInfo(path).absoluteFilePath())
{
    load();
}

std::optional<DefaultsValue> JsonUserDefaults::value(const QString &key) const
{
    const auto found = m_object.constFind(key);
    return found != m_object.constEnd() ? decode(found.value()) : std::nullopt;
}

void JsonUserDefaults::setValue(const QString &key, const DefaultsValue &value)
{
    const QJsonValue encoded = std::visit(Encoder(), value);
    if (const QJsonValue before = m_object.value(key); before != encoded) {
        const auto decoded = decode(before);
        if (!before.isUndefined() && !before.isNull()
            && (!decoded || decoded->index() != value.index()))
            keepMistaken(key);
        m_object.insert(key, encoded);
        m_stored.reset();
    }
    save();
}

void JsonUserDefaults::removeValue(const QString &key)
{
    if (!m_object.contains(key))
        return;
    m_object.remove(key);
    m_stored.reset();
    save();
}

void JsonUserDefaults::removeKeptCopies()
{
    const auto target = followLinks(m_path);
    if (!target)
        return;
    const auto moment = uR"(\d{8}-\d{6}(-\d+)?)"_s;
    for (const QString &path : filesBeside(*target, asideInfix, moment)) {
        if (::unlink(QFile::encodeName(path).constData()) != 0)
            Log::line(logTag, u"%1 can't be removed: %2"_s.arg(path, qt_error_string(errno)));
    }
    m_hasKept = false;
}

std::optional<JsonUserDefaults::FileStamp> JsonUserDefaults::stampOf(const QString &path)
{
    struct stat status{};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    return FileStamp{status.st_dev, status.st_ino, status.st_size, status.st_mtim};
}

void JsonUserDefaults::keepMistaken(const QString &key)
{
    const auto target = followLinks(m_path);
    if (!target || m_hasKept || m_mustSetAside || !QFileInfo(*target).isFile())
        return;
    if (const auto aside = setAside(*target, true)) {
        m_hasKept = true;
        Log::line(logTag,
                  u"%1 is of the wrong type and is replaced; %2 as it was is "
                  "kept as %3"_s.arg(key, *target, *aside));
    }
}

void JsonUserDefaults::load()
{
    const auto target = followLinks(m_path);
    if (!target)
        return;
    removeLeftovers(*target);
    const QFileInfo info(*target);
    if (!info.exists())
        return;
    if (!info.isFile()) {
        // Not a file that we or the user's tools wrote; `write` leaves it alone, too.
        Log::line(logTag, u"%1 is not a file, so no settings are read"_s.arg(*target));
        return;
    }
    const auto settings = read(*target);
    if (!settings) {
        const auto aside = setAside(*target);
        m_mustSetAside = !aside;
        Log::line(logTag,
                  aside ? u"%1 is damaged (%2) and was set aside as %3"_s.arg(
                              *target, settings.error(), *aside)
                        : u"%1 is damaged (%2) and can't be set aside (%3)"_s.arg(
                              *target, settings.error(), aside.error()));
        return;
    }
    // Dictated texts are nobody else's business, however the file came here.
    QFile::setPermissions(*target, info.permissions() & ownersPermissions);
    m_object = *settings;
    m_stored = stampOf(*target);
}

void JsonUserDefaults::save()
{
    if (m_stored && m_stored == stampOf(m_path))
        return;
    if (const auto reason = write()) {
        Log::line(logTag, u"Failed to save %1: %2"_s.arg(m_path, *reason));
        m_stored.reset();
    }
}

std::optional<QString> JsonUserDefaults::write()
{
    const auto target = followLinks(m_path);
    if (!target)
        return qt_error_string(ELOOP);
    const QFileInfo info(*target);
    if (info.exists() && !info.isFile())
        return u"something that is not a file is in its place"_s;
    if (m_mustSetAside && info.exists()) {
        if (const auto aside = setAside(*target); !aside)
            return u"the damaged file can't be set aside: "_s + aside.error();
    }
    m_mustSetAside = false;
    if (const auto made = LinuxFileSystem().createDirectory(directoryOf(*target)); !made)
        return made.error().localizedDescription;
    if (const auto reason = replaceFile(*target, QJsonDocument(m_object).toJson()))
        return reason;
    m_stored = stampOf(*target);
    return std::nullopt;
}

} // namespace Velloro
