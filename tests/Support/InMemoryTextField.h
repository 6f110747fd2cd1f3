#pragma once

#include "Base/Graphemes.h"
#include "Support/InMemoryPlatform.h"

#include <utility>
#include <vector>

namespace Velloro {

/// The text field that has the focus on a platform in memory: written through the accessibility
/// interface, pasted into, and edited by backspaces, each of which takes one user-perceived
/// character.
class InMemoryTextField
{
public:
    /// `caret` counts user-perceived characters.
    InMemoryTextField(InMemoryPlatform &memory, const QString &text, int64_t caret)
        : m_pasteboard(*memory.pasteboard)
        , m_element(memory.accessibility->focusText(text, {caret, 0}))
    {
        memory.keyboardEvents->receiver
            = [this](const InMemoryKeyboardEvents::Event &event) { receive(event); };
    }

    /// From now on it can be typed and pasted into only, like a terminal.
    void refuseAccessibility()
    {
        m_element.refusesValue = true;
        m_element.refusesSelectedText = true;
    }

    /// From now on it takes the keys when so many pauses have been made since the first, or when it
    /// is told to.
    void takeKeysLate(InMemoryKeyboardEvents &keyboard, int pauses)
    {
        keyboard.receiver = [this](const auto &event) { m_waiting.push_back(event); };
        keyboard.paused = [this, pauses]() mutable {
            if (--pauses == 0)
                takeKeys();
        };
    }
    void takeKeys()
    {
        for (const InMemoryKeyboardEvents::Event &event : std::exchange(m_waiting, {}))
            receive(event);
    }

    [[nodiscard]] QString text() const { return *m_element.value; }

private:
    void receive(const InMemoryKeyboardEvents::Event &event)
    {
        constexpr uint32_t keyV = 9;
        constexpr uint32_t keyDelete = 51;
        const int64_t caret = m_element.selectedRange->location;
        if (event == InMemoryKeyboardEvents::Event{keyDelete, true, 0} && caret > 0)
            replace(caret - 1, caret, {});
        else if (event == InMemoryKeyboardEvents::Event{keyV, true, KeyboardEvents::commandFlag})
            replace(caret, caret, m_pasteboard.content.value_or(QString()));
    }

    void replace(int64_t from, int64_t to, const QString &text)
    {
        const QString head = Graphemes::prefix(this->text(), from) + text;
        m_element.value = head + Graphemes::dropFirst(this->text(), to);
        m_element.selectedRange = TextRange{Graphemes::count(head), 0};
    }

    InMemoryPasteboard &m_pasteboard;
    InMemoryAccessibility::Element &m_element;
    std::vector<InMemoryKeyboardEvents::Event> m_waiting;
};

} // namespace Velloro
