#include "Views/Settings/Dictionary/DictionarySettingsViewModel.h"

#include "Base/Graphemes.h"
#include "Base/StringLiterals.h"

#include <algorithm>
#include <utility>

namespace Velloro {

namespace {

/// In user-perceived characters. The recogniser is told of some 200 short words at most; what is
/// longer than this is no word but something pasted by mistake.
constexpr int64_t maximumWordLength = 100;

bool isTooLong(const QString &word)
{
    return Graphemes::count(word) > maximumWordLength;
}

bool isBlank(QChar character)
{
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

/// The text without leading and trailing blanks. Line breaks are none.
QString trimmed(const QString &text)
{
    const auto begin = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto end = std::find_if_not(text.rbegin(), std::make_reverse_iterator(begin), isBlank);
    return QString(begin, end.base() - begin);
}

} // namespace

DictionarySettingsViewModel::DictionarySettingsViewModel(AppState &appState, QObject *parent)
    : QAbstractListModel(parent)
    , m_appState(appState)
    , m_words(appState.customDictionary())
{
    connect(&appState, &AppState::customDictionaryChanged, this,
            &DictionarySettingsViewModel::update);
}

void DictionarySettingsViewModel::setNewWord(const QString &word)
{
    if (std::exchange(m_newWord, word) != word)
        Q_EMIT newWordChanged();
}

bool DictionarySettingsViewModel::canAdd() const
{
    const QString word = trimmed(m_newWord);
    return !word.isEmpty() && !isTooLong(word);
}

QString DictionarySettingsViewModel::problem() const
{
    if (!isTooLong(trimmed(m_newWord)))
        return {};
    return tr("A word can have %1 characters at most.").arg(maximumWordLength);
}

QString DictionarySettingsViewModel::title() const
{
    return tr("Your Dictionary (%1 words)").arg(m_words.size());
}

QStringList DictionarySettingsViewModel::suggestions()
{
    return {u"OpenAI"_s, u"GPT-4"_s, u"ChatGPT"_s, u"Claude"_s, u"Anthropic"_s};
}

QList<bool> DictionarySettingsViewModel::suggestionsAvailable() const
{
    QList<bool> available;
    for (const QString &word : suggestions())
        available << !m_words.contains(word);
    return available;
}

void DictionarySettingsViewModel::addWord()
{
    if (append(trimmed(m_newWord)))
        setNewWord({});
}

void DictionarySettingsViewModel::quickAdd(const QString &word)
{
    append(word);
}

bool DictionarySettingsViewModel::append(const QString &word)
{
    QStringList words = m_appState.customDictionary();
    if (word.isEmpty() || isTooLong(word) || words.contains(word))
        return false;
    words << word;
    m_appState.setCustomDictionary(words);
    return true;
}

void DictionarySettingsViewModel::removeWord(const QString &word)
{
    QStringList words = m_appState.customDictionary();
    words.removeAll(word);
    m_appState.setCustomDictionary(words);
}

void DictionarySettingsViewModel::update()
{
    // What is the same at both ends stays, so that the list keeps its place.
    const QStringList &words = m_appState.customDictionary();
    const auto [oldFirst, newFirst]
        = std::mismatch(m_words.cbegin(), m_words.cend(), words.cbegin(), words.cend());
    const auto [oldLast, newLast]
        = std::mismatch(m_words.crbegin(), std::make_reverse_iterator(oldFirst), words.crbegin(),
                        std::make_reverse_iterator(newFirst));
    const auto first = int(oldFirst - m_words.cbegin());
    const auto removed = int(oldLast.base() - oldFirst);
    const auto inserted = int(newLast.base() - newFirst);
    if (removed > 0) {
        beginRemoveRows({}, first, first + removed - 1);
        m_words.remove(first, removed);
        endRemoveRows();
    }
    if (inserted > 0) {
        beginInsertRows({}, first, first + inserted - 1);
        m_words = words;
        endInsertRows();
    }
    Q_EMIT wordsChanged();
}

int DictionarySettingsViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_words.size());
}

QVariant DictionarySettingsViewModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != WordRole)
        return {};
    return m_words[index.row()];
}

QHash<int, QByteArray> DictionarySettingsViewModel::roleNames() const
{
    return {{WordRole, QByteArrayLiteral("word")}};
}

} // namespace Velloro
