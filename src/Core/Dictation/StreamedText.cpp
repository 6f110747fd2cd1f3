#include "Core/Dictation/StreamedText.h"

#include "Base/Graphemes.h"
#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Managers/TextInsertionManager.h"

#include <utility>

namespace Velloro {

namespace {

void log(const QString &message)
{
    Log::line(u"Dictation", message);
}

/// Whether the text begins with these characters. A letter is not the beginning of one with an
/// accent, and an accented one is the same however it is composed.
bool begins(const QString &text, const QString &start)
{
    const QString head = Graphemes::prefix(text, Graphemes::count(start));
    return head == start
        || head.normalized(QString::NormalizationForm_C)
        == start.normalized(QString::NormalizationForm_C);
}

} // namespace

StreamedText::StreamedText(TextInsertionManager &insertion)
    : m_insertion(insertion)
{
}

void StreamedText::clear()
{
    m_typed.clear();
    m_count = 0;
    m_pending.reset();
    m_isHeldBack = false;
}

void StreamedText::type(const QString &confirmed)
{
    if (confirmed == m_typed)
        return;
    if (!m_typed.isEmpty() && !(hasArrived() && m_insertion.isAtLastInsertion())) {
        if (!std::exchange(m_isHeldBack, true))
            log(u"Streaming held back: the typed text is not seen before the caret"_s);
        return;
    }

    QString added;
    Piece piece;
    if (m_typed.isEmpty()) {
        added = confirmed;
        piece
            = {0, u"Streaming start: '"_s + Graphemes::prefix(added, 40) + u"' ("_s, u" chars)"_s};
    } else if (begins(confirmed, m_typed)) {
        added = Graphemes::dropFirst(confirmed, Graphemes::count(m_typed));
        piece = {0, u"Confirmed: +'"_s + Graphemes::prefix(added, 25) + u"' (total: "_s, u")"_s};
    } else {
        // What was typed stays; the new wording follows it until the final text replaces both.
        added = u' ' + confirmed;
        piece = {0, u"Streaming edge: '"_s + Graphemes::prefix(confirmed, 30) + u"' (total: "_s,
                 u")"_s};
    }
    if (!added.isEmpty() && !insert(added))
        return;
    m_typed = confirmed;
    if (added.isEmpty())
        return;
    piece.length = Graphemes::count(added);
    m_pending = piece;
    (void)hasArrived();
}

bool StreamedText::insert(const QString &text)
{
    if (m_insertion.insertRemovably(text))
        return true;
    if (!std::exchange(m_isHeldBack, true)) {
        log(m_insertion.wasLastPasteRefused()
                ? u"Streaming held back: another program keeps the clipboard"_s
                : u"Streaming held back: words typed here could not be removed again"_s);
    }
    return false;
}

int64_t StreamedText::removableCount()
{
    (void)hasArrived();
    return m_count > 0 && m_insertion.isAtLastInsertion() ? m_count : 0;
}

bool StreamedText::hasArrived()
{
    if (m_pending && m_insertion.lastInsertionArrived()) {
        m_count += m_pending->length;
        log(m_pending->line + QString::number(m_count) + m_pending->end);
        m_pending.reset();
    }
    return !m_pending;
}

} // namespace Velloro
