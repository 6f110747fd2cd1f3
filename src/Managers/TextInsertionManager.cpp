#include "Managers/TextInsertionManager.h"

#include "Base/Graphemes.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>
#include <utility>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

constexpr uint32_t keyCodeV = 9;
constexpr uint32_t keyCodeDelete = 51;
constexpr auto pasteboardRestoreDelay = 500ms;
constexpr auto pauseAfterBackspace = 5000us;
/// Between looks at whether backspaces are done, and how many looks there are.
constexpr auto pauseBetweenLooks = 10ms;
constexpr int mostLooks = 30;

/// The content with the characters of the range replaced; the range may reach beyond the end.
QString replaced(const QString &content, const TextRange &range, const QString &text)
{
    const int64_t count = Graphemes::count(content);
    const int64_t start = std::min(range.location, count);
    const int64_t end = start + std::min(range.length, count - start);
    return Graphemes::prefix(content, start) + text + Graphemes::dropFirst(content, end);
}

} // namespace

TextInsertionManager::TextInsertionManager(Platform &platform, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
{
    m_pasteboardReturn.setSingleShot(true);
    m_pasteboardReturn.setTimerType(Qt::PreciseTimer);
    m_pasteboardReturn.setInterval(pasteboardRestoreDelay);
    connect(&m_pasteboardReturn, &QTimer::timeout, this,
            [this] { m_platform.pasteboard->giveBack(); });
}

TextInsertionManager::~TextInsertionManager()
{
    if (m_pasteboardReturn.isActive())
        m_platform.pasteboard->giveBack();
}

void TextInsertionManager::prepare()
{
    m_platform.pasteboard->follow();
    m_platform.userInput->follow();
}

void TextInsertionManager::finish()
{
    m_platform.pasteboard->unfollow();
    m_platform.userInput->unfollow();
}

bool TextInsertionManager::insertText(const QString &text)
{
    if (text.isEmpty())
        return false;
    m_outcome = insert(text, true);
    if (m_outcome == Outcome::unsent) {
        // The user can paste it himself, so it is to stay.
        m_pasteboardReturn.stop();
        m_platform.pasteboard->setString(text);
    }
    return true;
}

bool TextInsertionManager::insertRemovably(const QString &text)
{
    // Without that, the caret may be anywhere when what was pasted is to be deleted.
    m_outcome = insert(text, m_platform.userInput->isTold());
    return m_outcome == Outcome::inserted;
}

TextInsertionManager::Outcome TextInsertionManager::insert(const QString &text, bool mayPaste)
{
    const Insertion before = std::exchange(m_last, {});
    m_last.window = m_platform.workspace->frontmostWindow();
    const uint64_t presses = m_platform.userInput->presses();
    m_last.wasWritten = insertViaAccessibility(text);
    if (m_last.wasWritten)
        return Outcome::inserted;
    m_last.presses = presses;
    const Outcome outcome = mayPaste ? insertViaClipboard(text) : Outcome::unsent;
    if (outcome != Outcome::inserted)
        m_last = before;
    return outcome;
}

bool TextInsertionManager::lastInsertionArrived()
{
    if (m_last.wasWritten)
        return m_platform.accessibility->showsLastText();
    m_last.wasFetched = m_last.wasFetched || m_platform.pasteboard->awaitPaste();
    return m_last.wasFetched;
}

bool TextInsertionManager::isAtLastInsertion()
{
    if (!isInLastWindow() || !isUntouched())
        return false;
    if (m_last.target) {
        const AccessibilityElementRef element = focusedElement();
        if (element && !element->isSameAs(*m_last.target))
            return false;
    }
    return !m_last.wasWritten || m_platform.accessibility->showsLastText();
}

bool TextInsertionManager::isInLastWindow()
{
    const std::optional<uint64_t> window = m_platform.workspace->frontmostWindow();
    return !window || !m_last.window || *window == *m_last.window;
}

bool TextInsertionManager::isUntouched()
{
    return !m_last.presses
        || (m_platform.userInput->isTold() && *m_last.presses == m_platform.userInput->presses());
}

AccessibilityElementRef TextInsertionManager::focusedElement()
{
    Accessibility &accessibility = *m_platform.accessibility;
    if (!accessibility.isProcessTrusted())
        return nullptr;
    return accessibility.focusedElement().value_or(nullptr);
}

bool TextInsertionManager::insertViaAccessibility(const QString &text)
{
    const std::optional<Deletion> deletion = std::exchange(m_deletion, std::nullopt);
    const AccessibilityElementRef element = focusedElement();
    if (!element)
        return false;
    m_last.target = element;
    // Writing overtakes key strokes, and a paste stroke follows them.
    if (deletion && !isDone(*deletion, element))
        return false;

    Accessibility &accessibility = *m_platform.accessibility;
    const auto content = accessibility.text(element);
    const auto range
        = content.and_then([&](const QString &) { return accessibility.selection(element); });
    if (range && range->location >= 0 && range->length >= 0
        && accessibility.setText(element, replaced(*content, *range, text))) {
        const int64_t inserted = Graphemes::count(text);
        // A caret that can't be counted is not set.
        if (range->location <= std::numeric_limits<int64_t>::max() - inserted) {
            (void)accessibility.setSelection(element, {range->location + inserted, 0});
        }
        return true;
    }

    return accessibility.insert(element, text).has_value();
}

TextInsertionManager::Outcome TextInsertionManager::insertViaClipboard(const QString &text)
{
    m_platform.pasteboard->borrow(text);
    const bool isSent = simulatePaste();
    // Half a second after the last of several.
    m_pasteboardReturn.start();
    if (isSent)
        return Outcome::inserted;
    return m_platform.pasteboard->wasPasteRefused() ? Outcome::refused : Outcome::unsent;
}

bool TextInsertionManager::simulatePaste()
{
    KeyboardEvents &keyboard = *m_platform.keyboardEvents;
    if (!keyboard.post(keyCodeV, true, KeyboardEvents::commandFlag))
        return false;
    (void)keyboard.post(keyCodeV, false, KeyboardEvents::commandFlag);
    return true;
}

TextInsertionManager::Deletion TextInsertionManager::deletion(int64_t count)
{
    // Where the words were pasted, a paste takes their place.
    if (!m_last.wasWritten)
        return {};
    Accessibility &accessibility = *m_platform.accessibility;
    Deletion result{m_last.target, std::nullopt, 0};
    const auto content = accessibility.text(result.element);
    const auto range = accessibility.selection(result.element);
    if (content && range && range->length == 0 && range->location >= count) {
        result.caret = range->location - count;
        result.remaining = replaced(*content, {result.caret, count}, {});
    }
    return result;
}

bool TextInsertionManager::isDone(const Deletion &deletion, const AccessibilityElementRef &focused)
{
    if (!deletion.element || !deletion.element->isSameAs(*focused))
        return false;
    for (int look = 0; deletion.remaining && look < mostLooks; ++look) {
        if (look > 0)
            m_platform.keyboardEvents->pause(pauseBetweenLooks);
        const auto content = m_platform.accessibility->text(focused);
        if (!content)
            return false;
        if (*content == *deletion.remaining)
            return true;
    }
    return false;
}

void TextInsertionManager::deleteBackwards(int64_t count)
{
    if (count < 1)
        return;
    m_deletion = deletion(count);
    KeyboardEvents &keyboard = *m_platform.keyboardEvents;
    for (int64_t sent = 0; sent < count && isInLastWindow() && isUntouched(); ++sent) {
        if (!keyboard.post(keyCodeDelete, true, 0)) {
            if (sent == 0)
                deleteViaAccessibility();
            return;
        }
        (void)keyboard.post(keyCodeDelete, false, 0);
        keyboard.pause(pauseAfterBackspace);
    }
}

void TextInsertionManager::deleteViaAccessibility()
{
    Accessibility &accessibility = *m_platform.accessibility;
    if (m_deletion->remaining && accessibility.setText(m_deletion->element, *m_deletion->remaining))
        (void)accessibility.setSelection(m_deletion->element, {m_deletion->caret, 0});
}

} // namespace Velloro
