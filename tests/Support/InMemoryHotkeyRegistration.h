#pragma once

#include "Platform/HotkeyRegistration.h"

#include <map>
#include <vector>

namespace Velloro {

/// Combinations that the test presses. One is in force as long as it is registered.
class InMemoryHotkeyRegistration : public HotkeyRegistration
{
public:
    struct Registered
    {
        KeyCombination combination;
        HotkeyIdentifier identifier;

        friend bool operator==(const Registered &, const Registered &) = default;
    };

    /// What is in force, by reference.
    std::map<Reference, Registered> registered;
    /// Every attempt, refused ones included.
    std::vector<Registered> attempts;
    /// What the next attempts are refused with; 0 accepts them.
    Status refusal = 0;
    int pressedHandlersInstalled = 0;
    int releasedHandlersInstalled = 0;
    /// The desktop has yet to answer to what is registered next.
    bool isUndecided = false;
    HotkeyAbilities currentAbilities;

    /// Presses the first combination in force; nothing happens when there is none.
    void press() { deliver(m_pressed); }
    void release() { deliver(m_released); }
    /// Presses it where nobody tells of the release.
    void toggle() { deliver(m_toggled); }
    /// Delivers a press or release with an identifier of the test's, registered or not.
    void press(const HotkeyIdentifier *identifier)
    {
        if (m_pressed)
            m_pressed(identifier);
    }
    void release(const HotkeyIdentifier *identifier)
    {
        if (m_released)
            m_released(identifier);
    }

    /// What a change of the layout or of the keyboards does; 0 for what was refused before.
    void changeStatus(Reference reference, Status status)
    {
        if (m_status)
            m_status(reference, status);
    }

    void setStatusHandler(StatusHandler handler) override { m_status = std::move(handler); }
    void setPressedHandler(Handler handler) override
    {
        pressedHandlersInstalled += handler ? 1 : 0;
        m_pressed = std::move(handler);
    }
    void setReleasedHandler(Handler handler) override
    {
        releasedHandlersInstalled += handler ? 1 : 0;
        m_released = std::move(handler);
    }
    void setToggledHandler(Handler handler) override { m_toggled = std::move(handler); }
    [[nodiscard]] tl::expected<Reference, Status>
    registerHotkey(KeyCombination combination, HotkeyIdentifier identifier) override
    {
        attempts.push_back({combination, identifier});
        if (refusal != 0)
            return tl::unexpected(refusal);
        registered[++m_lastReference] = attempts.back();
        return m_lastReference;
    }
    [[nodiscard]] bool isPending(Reference) const override { return isUndecided; }
    void unregisterHotkey(Reference reference) override { registered.erase(reference); }
    [[nodiscard]] HotkeyAbilities abilities() const override { return currentAbilities; }

private:
    void deliver(const Handler &handler)
    {
        if (handler && !registered.empty())
            handler(&registered.begin()->second.identifier);
    }

    Handler m_pressed;
    Handler m_released;
    Handler m_toggled;
    StatusHandler m_status;
    Reference m_lastReference = 0;
};

} // namespace Velloro
