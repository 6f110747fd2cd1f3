#include "Base/Graphemes.h"

#include <memory>
#include <unicode/brkiter.h>
#include <unicode/unistr.h>

namespace Velloro::Graphemes {

namespace {

/// Walks the cluster boundaries of a text after its start until `visit` returns false.
template <typename Visitor>
void forEachBoundary(const QString &text, Visitor visit)
{
    // Making an iterator parses its rules, so each thread keeps one.
    thread_local const std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> made(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        return U_SUCCESS(status) ? std::move(made) : nullptr;
    }();
    if (!iterator)
        return;
    // Aliases the text's storage without copying it.
    const icu::UnicodeString alias(false, reinterpret_cast<const char16_t *>(text.utf16()),
                                   static_cast<int32_t>(text.size()));
    iterator->setText(alias);
    iterator->first();
    for (int32_t at = iterator->next(); at != icu::BreakIterator::DONE; at = iterator->next()) {
        if (!visit(static_cast<qsizetype>(at)))
            return;
    }
}

} // namespace

int64_t count(const QString &text)
{
    int64_t clusters = 0;
    forEachBoundary(text, [&](qsizetype) {
        ++clusters;
        return true;
    });
    return clusters;
}

QString prefix(const QString &text, int64_t length)
{
    return text.left(offsetOf(text, length));
}

QString dropFirst(const QString &text, int64_t length)
{
    return text.mid(offsetOf(text, length));
}

qsizetype offsetOf(const QString &text, int64_t index)
{
    if (index <= 0)
        return 0;
    qsizetype offset = text.size();
    int64_t clusters = 0;
    forEachBoundary(text, [&](qsizetype at) {
        if (++clusters < index)
            return true;
        offset = at;
        return false;
    });
    return offset;
}

int64_t indexAt(const QString &text, qsizetype offset)
{
    if (offset <= 0)
        return 0;
    int64_t clusters = 0;
    forEachBoundary(text, [&](qsizetype at) {
        ++clusters;
        return at < offset;
    });
    return clusters;
}

} // namespace Velloro::Graphemes
