#include "Platform/Linux/Desktop/XdgLoginItem.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Files/SystemError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace Velloro {

namespace {

const QString deletedSuffix = u" (deleted)"_s;

/// A value of type string in a desktop entry.
QString escaped(QString value)
{
    return value.replace(u'\\', u"\\\\"_s)
        .replace(u'\n', u"\\n"_s)
        .replace(u'\r', u"\\r"_s)
        .replace(u'\t', u"\\t"_s);
}

QString unescaped(const QString &value)
{
    QString result;
    for (qsizetype index = 0; index < value.size(); ++index) {
        if (value[index] != u'\\' || index + 1 == value.size()) {
            result += value[index];
            continue;
        }
        const QChar code = value[++index];
        result += code == u'n' ? u'\n' : code == u'r' ? u'\r' : code == u't' ? u'\t' : code;
    }
    return result;
}

/// One argument of a command line in a desktop entry: quoted, without field codes.
QString quoted(const QString &argument)
{
    QString result;
    for (const QChar character : argument) {
        if (QStringView(u"\"`$\\").contains(character))
            result += u'\\';
        result += character;
        if (character == u'%')
            result += character;
    }
    return u'"' + result + u'"';
}

/// The command line that starts a program.
QString commandLine(const QString &program)
{
    // Some desktops look for the first word before they undo the doubling of percent signs.
    if (program.contains(u'%'))
        return u"/bin/sh -c "_s + quoted(u"exec \"$0\""_s) + u' ' + quoted(program);
    return quoted(program);
}

/// The value of a key of the entry at `path`; nothing when there is no such entry or key.
std::optional<QString> entryValue(const QString &path, const QString &key)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QString prefix = key + u'=';
    const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
    for (const QString &line : lines) {
        if (line.startsWith(prefix))
            return unescaped(line.mid(prefix.size()));
    }
    return std::nullopt;
}

/// What the system said when the file device failed, or the device's own words.
PlatformError fileError(const QString &what, const QFileDevice &file)
{
    return {0, what + u": "_s + file.errorString()};
}

} // namespace

XdgLoginItem::XdgLoginItem(const QString &program)
    : m_program(program)
{
}

QString XdgLoginItem::entryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + u"/autostart/velloro.desktop"_s;
}

QString XdgLoginItem::program() const
{
    if (!m_program.isEmpty())
        return m_program;
    // The kernel's own knowledge follows a program that is moved while it runs. One that was
    // replaced by an update meanwhile is named with a suffix; the new one lies where it was.
    std::error_code error;
    const auto link = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        return {};
    QString path = QFile::decodeName(link.c_str());
    if (path.endsWith(deletedSuffix) && !QFileInfo::exists(path))
        path.chop(deletedSuffix.size());
    return path;
}

LoginItem::Result XdgLoginItem::registerItem()
{
    const QString program = this->program();
    if (!QFileInfo(program).isExecutable())
        return tl::unexpected(systemError(ENOENT, u"The program's own file"_s));

    const QString path = entryPath();
    const QString folder = QFileInfo(path).path();
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(folder).toStdString(), error);
    if (error)
        return tl::unexpected(systemError(error.value(), folder));

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return tl::unexpected(fileError(path, file));
    const QString entry = u"[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Velloro\n"
                          "Comment=Dictation\n"
                          "Icon=velloro\n"
                          "Exec=%1\n"
                          "TryExec=%2\n"
                          "Terminal=false\n"
                          "StartupNotify=false\n"
                          "X-GNOME-Autostart-enabled=true\n"_s;
    // Both at once: a percent sign in the path is no place to fill.
    file.write(entry.arg(escaped(commandLine(program)), escaped(program)).toUtf8());
    if (!file.commit())
        return tl::unexpected(fileError(path, file));
    return {};
}

LoginItem::Result XdgLoginItem::unregisterItem()
{
    const QString path = entryPath();
    if (std::remove(QFile::encodeName(path).constData()) != 0 && errno != ENOENT)
        return tl::unexpected(systemError(errno, path));
    return {};
}

LoginItem::Result XdgLoginItem::refresh()
{
    const QString path = entryPath();
    // An entry that the user switched off in the desktop's own settings stays off.
    if (entryValue(path, u"Hidden"_s) == u"true"_s
        || entryValue(path, u"X-GNOME-Autostart-enabled"_s) == u"false"_s) {
        return {};
    }
    const std::optional<QString> registered = entryValue(path, u"TryExec"_s);
    if (!registered || QFileInfo(*registered).isExecutable())
        return {};
    return registerItem();
}

} // namespace Velloro
