#pragma once

#include "Platform/KeyEventMonitor.h"

#include <set>

namespace Velloro {

/// Key events that the test makes.
class InMemoryKeyEventMonitor : public KeyEventMonitor
{
public:
    [[nodiscard]] int monitorCount() const { return int(m_monitors.size()); }

    /// Presses a key, or changes the modifiers; true when somebody swallowed the event.
    bool keyDown(uint32_t keyCode, uint32_t modifierFlags = 0, bool hasOtherModifier = false)
    {
        return deliver({KeyEvent::Type::keyDown, keyCode, modifierFlags, hasOtherModifier});
    }
    bool flagsChanged(uint32_t modifierFlags)
    {
        return deliver({KeyEvent::Type::flagsChanged, 0, modifierFlags, false});
    }

    /// Whether the next monitors see the desktop's combinations.
    bool seesDesktopShortcuts = true;

    [[nodiscard]] std::unique_ptr<Monitor> addLocalMonitor(Handler handler) override
    {
        return std::make_unique<Token>(*this, std::move(handler));
    }

private:
    class Token : public Monitor
    {
    public:
        Token(InMemoryKeyEventMonitor &newOwner, Handler newHandler)
            : handler(std::move(newHandler))
            , owner(newOwner)
        {
            owner.m_monitors.insert(this);
        }
        ~Token() override { owner.m_monitors.erase(this); }
        [[nodiscard]] bool seesDesktopShortcuts() const override
        {
            return owner.seesDesktopShortcuts;
        }

        Handler handler;
        InMemoryKeyEventMonitor &owner;
    };

    bool deliver(const KeyEvent &event)
    {
        bool swallowed = false;
        for (Token *monitor : m_monitors)
            swallowed = monitor->handler(event) || swallowed;
        return swallowed;
    }

    std::set<Token *> m_monitors;
};

} // namespace Velloro
