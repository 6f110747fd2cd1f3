#include "Platform/Linux/Files/JsonUserDefaults.h"

#include "Base/Log.h"
#include "Platform/Linux/Files/JsonSalvage.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStandardPaths>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <tl/expected.hpp>
#include <unistd.h>
#include <utility>

namespace Velloro {

namespace {

constexpr auto logTag = u"UserDefaults";
const QString dataTag = QStringLiteral("$data");
const QString mapTag = QStringLiteral("$map");
/// What follows the file's name in the names of temporary files; six random characters come after.
const QString temporaryInfix = QStringLiteral(".part-");
/// What follows it in the names of files that were set aside; the moment comes after.
const QString asideInfix = QStringLiteral(".damaged-");
/// Settings and 50 transcripts are far smaller; what is bigger is not ours.
constexpr off_t maximumFileSize = 64 * 1024 * 1024;
constexpr int maximumLinkDepth = 40;

/// A file descriptor that is closed at the end of its scope.
class Descriptor
{
public:
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int get() const { return m_descriptor; }
    /// Closes it now; false when the system reports a late write error.
    [[nodiscard]] bool close() { return ::close(std::exchange(m_descriptor, -1)) == 0; }

private:
    int m_descriptor;
};

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

template <typename Call>
auto retryInterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

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
        const auto link =
            std::filesystem::read_symlink(QFile::encodeName(path).toStdString(), error);
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

/// Makes a directory and its missing parents, for the user's eyes alone. 0 or the error.
int makeDirectories(const QString &path)
{
    const QByteArray encoded = QFile::encodeName(path);
    if (::mkdir(encoded.constData(), 0700) == 0 || errno == EEXIST)
        return 0;
    if (errno != ENOENT)
        return errno;
    const QString parent = directoryOf(path);
    if (parent == path)
        return ENOENT;
    if (const int error = makeDirectories(parent); error != 0)
        return error;
    return ::mkdir(encoded.constData(), 0700) == 0 || errno == EEXIST ? 0 : errno;
}

/// The paths of the files beside `target` whose names continue with `infix` and a match of `rest`.
QStringList filesBeside(const QString &target, const QString &infix,
                        const QString &rest = QStringLiteral(".*"))
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
    for (const QString &name : filesBeside(target, temporaryInfix)) {
        const QByteArray path = QFile::encodeName(name);
        const Descriptor file(
            ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
        if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0)
            ::unlink(path.constData());
    }
}

/// Writes `content` to a new file beside `target` and puts it in its place. 0 or the error.
int replaceFile(const QString &target, const QByteArray &content)
{
    QByteArray temporary = QFile::encodeName(target + temporaryInfix) + "XXXXXX";
    Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.isOpen())
        return errno;
    const auto fail = [&](int error) {
        ::unlink(temporary.constData());
        return error;
    };
    // The lock tells this file from one that a killed process left. Its mode is 0600 from the
    // start.
    ::flock(file.get(), LOCK_EX | LOCK_NB);

    for (qsizetype written = 0; written < content.size();) {
        const ssize_t count = retryInterrupted([&] {
            return ::write(file.get(), content.constData() + written,
                           static_cast<size_t>(content.size() - written));
        });
        if (count < 0)
            return fail(errno);
        written += count;
    }
    if (retryInterrupted([&] { return ::fsync(file.get()); }) != 0)
        return fail(errno);
    if (::rename(temporary.constData(), QFile::encodeName(target).constData()) != 0)
        return fail(errno);
    if (!file.close())
        return errno;

    // The rename itself is on disk when the directory is; some file systems can't be asked for it.
    const QByteArray directoryName = QFile::encodeName(directoryOf(target));
    const Descriptor directory(
        ::open(directoryName.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen() && retryInterrupted([&] { return ::fsync(directory.get()); }) != 0 &&
        errno != EINVAL && errno != ENOTSUP)
        return errno;
    return 0;
}

/// Renames the file at `target`, whose content can't be used, without overwriting another one; with
/// `keep`, it stays where it is under its own name as well. Returns the new name or the error.
tl::expected<QString, int> setAside(const QString &target, bool keep = false)
{
    const QByteArray from = QFile::encodeName(target);
    const QString base = target + asideInfix +
                         QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss");
    for (int attempt = 1;; ++attempt) {
        const QString aside = attempt == 1 ? base : QStringLiteral("%1-%2").arg(base).arg(attempt);
        const QByteArray to = QFile::encodeName(aside);
        if (keep ? ::link(from.constData(), to.constData()) == 0
                 : ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(),
                               RENAME_NOREPLACE) == 0)
            return aside;
        if (errno == EEXIST)
            continue;
        // A file system without links: what is in memory is written anew.
        if (keep)
            return setAside(target);
        // A file system that does not know the flag.
        if (errno == EINVAL) {
            if (QFileInfo::exists(aside))
                continue;
            if (::rename(from.constData(), to.constData()) == 0)
                return aside;
        }
        return tl::unexpected(errno);
    }
}

} // namespace

QString JsonUserDefaults::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Velloro/settings.json");
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
    const auto moment = QStringLiteral(R"(\d{8}-\d{6}(-\d+)?)");
    for (const QString &path : filesBeside(*target, asideInfix, moment)) {
        if (::unlink(QFile::encodeName(path).constData()) != 0)
            Log::line(logTag, QStringLiteral("%1 can't be removed: %2").arg(path, errorText(errno)));
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
        Log::line(logTag, QStringLiteral("%1 is of the wrong type and gives way; %2 as it was is "
                                         "kept as %3")
                              .arg(key, *target, *aside));
    }
}

void JsonUserDefaults::load()
{
    const auto target = followLinks(m_path);
    if (!target)
        return;
    removeLeftovers(*target);

    const auto reject = [&](const QString &reason, const QJsonObject &salvaged = {}) {
        const auto aside = setAside(*target);
        m_mustSetAside = !aside;
        QString line = aside ? QStringLiteral("%1 is damaged (%2) and was set aside as %3")
                                   .arg(*target, reason, *aside)
                             : QStringLiteral("%1 is damaged (%2) and can't be set aside (%3)")
                                   .arg(*target, reason, errorText(aside.error()));
        if (!salvaged.isEmpty())
            line += QStringLiteral("; kept from it: %1").arg(salvaged.size());
        Log::line(logTag, line);
        m_object = salvaged;
        if (!salvaged.isEmpty())
            save();
    };
    const Descriptor file(
        ::open(QFile::encodeName(*target).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) {
        if (errno != ENOENT && errno != ENOTDIR)
            reject(errorText(errno));
        return;
    }
    struct stat status{};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        // Not a file that we or the user's tools wrote; `write` leaves it alone, too.
        Log::line(logTag, QStringLiteral("%1 is not a file, so no settings are read").arg(*target));
        return;
    }
    if (status.st_size > maximumFileSize)
        return reject(QStringLiteral("it is too big"));

    QFile content;
    if (!content.open(file.get(), QIODevice::ReadOnly))
        return reject(content.errorString());
    const QByteArray bytes = content.readAll();
    if (content.error() != QFileDevice::NoError)
        return reject(content.errorString());
    if (bytes.isEmpty()) {
        // There is nothing in it to be lost.
        Log::line(logTag, QStringLiteral("%1 is empty").arg(*target));
        return;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError)
        return reject(error.errorString(), salvageJsonMembers(bytes));
    if (!document.isObject())
        return reject(QStringLiteral("it does not hold an object"));

    // Dictated texts are nobody else's business, however the file came here.
    if ((status.st_mode & 0077) != 0)
        (void)::fchmod(file.get(), 0600);
    m_object = document.object();
    m_stored = stampOf(*target);
}

void JsonUserDefaults::save()
{
    if (m_stored && m_stored == stampOf(m_path))
        return;
    if (const auto reason = write()) {
        Log::line(logTag, QStringLiteral("Failed to save %1: %2").arg(m_path, *reason));
        m_stored.reset();
    }
}

std::optional<QString> JsonUserDefaults::write()
{
    const auto target = followLinks(m_path);
    if (!target)
        return errorText(ELOOP);
    const QFileInfo info(*target);
    if (info.exists() && !info.isFile())
        return QStringLiteral("something that is not a file is in its place");
    if (m_mustSetAside && info.exists()) {
        if (const auto aside = setAside(*target); !aside)
            return QStringLiteral("the damaged file can't be set aside: ") +
                   errorText(aside.error());
    }
    m_mustSetAside = false;
    if (const int error = makeDirectories(directoryOf(*target)); error != 0)
        return errorText(error);
    if (const int error = replaceFile(*target, QJsonDocument(m_object).toJson()); error != 0)
        return errorText(error);
    m_stored = stampOf(*target);
    return std::nullopt;
}

} // namespace Velloro
