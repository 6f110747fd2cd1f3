#include "Views/Settings/History/HistoryViewModel.h"

#include "Base/StringLiterals.h"

#include <QTimer>
#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto copiedDuration = 1500ms;
/// Far more characters than three lines hold. Laying out the whole of a long transcript for its
/// beginning would make the list stutter.
constexpr qsizetype previewLength = 1000;

QString preview(const QString &text)
{
    if (text.size() <= previewLength)
        return text;
    // A character outside the basic plane is not cut in two.
    return text.left(previewLength - (text[previewLength - 1].isHighSurrogate() ? 1 : 0));
}

} // namespace

HistoryViewModel::HistoryViewModel(AppState &appState, Pasteboard &pasteboard,
                                   const QLocale &locale, QObject *parent)
    : QAbstractListModel(parent)
    , m_appState(appState)
    , m_pasteboard(pasteboard)
    , m_locale(locale)
    , m_items(appState.transcriptionHistory())
{
    connect(&appState, &AppState::transcriptionHistoryChanged, this, &HistoryViewModel::update);
}

QString HistoryViewModel::time(QTime time) const
{
    // A desktop without a language has no short form of its own.
    return m_locale.language() == QLocale::C ? time.toString(u"HH:mm"_s)
                                             : m_locale.toString(time, QLocale::ShortFormat);
}

void HistoryViewModel::copy(int row)
{
    if (row < 0 || row >= m_items.size())
        return;
    const QUuid id = m_items[row].id;
    m_pasteboard.setString(m_items[row].text);
    setCopied(id, true);
    QTimer::singleShot(copiedDuration, this, [this, id] { setCopied(id, false); });
}

void HistoryViewModel::clear()
{
    m_appState.clearHistory();
}

void HistoryViewModel::setCopied(const QUuid &id, bool copied)
{
    if (copied)
        m_copied.insert(id);
    else
        m_copied.remove(id);
    const auto found = std::ranges::find(m_items, id, &TranscriptionHistoryItem::id);
    if (found == m_items.end())
        return;
    const QModelIndex changed = index(int(found - m_items.begin()));
    Q_EMIT dataChanged(changed, changed, {CopiedRole});
}

void HistoryViewModel::update()
{
    const QList<TranscriptionHistoryItem> &items = m_appState.transcriptionHistory();
    const bool wasEmpty = m_items.isEmpty();
    // Entries come at the top and the oldest go; anything else is a new list.
    const auto firstKept = m_items.isEmpty()
        ? items.cend()
        : std::ranges::find(items, m_items.constFirst().id, &TranscriptionHistoryItem::id);
    const auto inserted = int(firstKept - items.cbegin());
    const qsizetype kept = items.size() - inserted;
    if (inserted > 0 && kept > 0 && kept <= m_items.size()
        && std::equal(firstKept, items.cend(), m_items.cbegin())) {
        if (kept < m_items.size()) {
            beginRemoveRows({}, int(kept), int(m_items.size()) - 1);
            m_items.resize(kept);
            endRemoveRows();
        }
        beginInsertRows({}, 0, inserted - 1);
        m_items = items;
        endInsertRows();
    } else {
        beginResetModel();
        m_items = items;
        endResetModel();
    }
    if (m_items.isEmpty() != wasEmpty)
        Q_EMIT isEmptyChanged();
}

int HistoryViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_items.size());
}

QVariant HistoryViewModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const TranscriptionHistoryItem &item = m_items[index.row()];
    switch (role) {
    case PreviewRole:
        return preview(item.text);
    case TimeRole:
        return time(item.dateTime().toLocalTime().time());
    case CopiedRole:
        return m_copied.contains(item.id);
    default:
        return {};
    }
}

QHash<int, QByteArray> HistoryViewModel::roleNames() const
{
    return {{PreviewRole, QByteArrayLiteral("preview")},
            {TimeRole, QByteArrayLiteral("time")},
            {CopiedRole, QByteArrayLiteral("copied")}};
}

} // namespace Velloro
