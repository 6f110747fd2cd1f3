#include "Platform/Linux/Wayland/Sway/SwayConfig.h"

#include "Base/StringLiterals.h"
#include "Platform/ModifierKeys.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <algorithm>
#include <optional>
#include <wordexp.h>

namespace Velloro {

namespace {

const QRegularExpression &blanks()
{
    static const QRegularExpression expression(u"\\s+"_s);
    return expression;
}

/// The modifier of this name; nothing where it is the name of a key.
std::optional<uint32_t> modifier(const QString &name)
{
    static const QHash<QString, uint32_t> modifiers{
        {u"shift"_s, ClassicMask::shift},       {u"control"_s, ClassicMask::control},
        {u"ctrl"_s, ClassicMask::control},      {u"mod1"_s, ClassicMask::option},
        {u"alt"_s, ClassicMask::option},        {u"mod4"_s, ClassicMask::command},
        {u"super"_s, ClassicMask::command},     {u"logo"_s, ClassicMask::command},
        {u"lock"_s, SwayConfig::otherModifier}, {u"caps"_s, SwayConfig::otherModifier},
        {u"mod2"_s, SwayConfig::otherModifier}, {u"num"_s, SwayConfig::otherModifier},
        {u"mod3"_s, SwayConfig::otherModifier}, {u"mod5"_s, SwayConfig::otherModifier}};
    const auto found = modifiers.constFind(name.toLower());
    return found == modifiers.constEnd() ? std::nullopt : std::optional(*found);
}

/// The files of a pattern with `~`, variables of the environment and wildcards.
QStringList expand(const QString &pattern)
{
    QStringList files;
    wordexp_t words;
    if (wordexp(QFile::encodeName(pattern).constData(), &words, WRDE_NOCMD) != 0)
        return files;
    for (size_t i = 0; i < words.we_wordc; ++i)
        files << QFile::decodeName(words.we_wordv[i]);
    wordfree(&words);
    return files;
}

} // namespace

SwayConfig::SwayConfig(const QString &text, const QString &folder)
    : m_folder(folder)
{
    readText(text);
}

void SwayConfig::readText(const QString &text)
{
    QString line;
    for (const QString &part : text.split(u'\n')) {
        line += part;
        if (line.endsWith(u'\\')) {
            line.chop(1);
            continue;
        }
        readLine(line.trimmed());
        line.clear();
    }
}

void SwayConfig::readLine(const QString &line)
{
    if (line.isEmpty() || line.startsWith(u'#'))
        return;
    QStringList words = line.split(blanks());
    if (words.constFirst() == u"}") {
        if (!m_blocks.isEmpty())
            m_blocks.removeLast();
        return;
    }
    if (!m_blocks.isEmpty())
        words = m_blocks.constLast() + words;
    if (words.constLast() == u"{") {
        words.removeLast();
        m_blocks << words;
        return;
    }
    readCommand(words);
}

void SwayConfig::readCommand(QStringList words)
{
    const QString command = words.takeFirst();
    if (command == u"set" && words.size() > 1) {
        m_variables[words.constFirst()] = words.mid(1).join(u' ');
    } else if (command == u"include") {
        include(words.join(u' '));
    } else if (command == u"bindsym" || command == u"bindcode" || command == u"unbindsym"
               || command == u"unbindcode") {
        readBinding(QStringList{command} + words);
    }
}

void SwayConfig::readBinding(const QStringList &words)
{
    const auto combination = std::find_if(words.begin() + 1, words.end(), [](const QString &word) {
        return !word.startsWith(u"--"_s);
    });
    if (combination == words.end())
        return;
    QString text = *combination;
    // A longer name may begin with a shorter one.
    QStringList names = m_variables.keys();
    std::ranges::sort(names, std::ranges::greater(), &QString::size);
    for (const QString &name : std::as_const(names))
        text.replace(name, m_variables.value(name));

    Binding binding{0, {}, words.constFirst().endsWith(u"bindcode"_s)};
    for (const QString &part : text.split(u'+', Qt::SkipEmptyParts)) {
        if (const auto mask = modifier(part)) {
            binding.modifiers |= *mask;
        } else if (!part.startsWith(u"Group"_s)) {
            // The hotkey has one key.
            if (!binding.key.isEmpty())
                return;
            binding.key = part;
        }
    }
    if (words.constFirst().startsWith(u"un"_s))
        m_bindings.removeAll(binding);
    else
        m_bindings << binding;
}

void SwayConfig::include(const QString &pattern)
{
    const bool isRelative = !pattern.startsWith(u'/') && !pattern.startsWith(u'~')
        && !pattern.startsWith(u'$');
    for (const QString &name : expand(isRelative ? m_folder + u'/' + pattern : pattern)) {
        QFile file(name);
        // One that includes itself is read once.
        if (m_included.contains(name) || !file.open(QIODevice::ReadOnly))
            continue;
        m_included << name;
        const QString folder = std::exchange(m_folder, QFileInfo(name).path());
        readText(QString::fromUtf8(file.readAll()));
        m_folder = folder;
    }
}

} // namespace Velloro
