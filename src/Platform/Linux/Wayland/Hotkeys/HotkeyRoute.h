#pragma once

#include "Platform/Linux/Wayland/Hotkeys/DesktopHotkeys.h"

#include <deque>
#include <optional>

namespace Velloro {

/// The hotkey on a Wayland desktop, by the first of several ways that the desktop offers.
///
/// The ways are asked one after the other from the start on; until one has answered a registration
/// is pending. Where none is offered, the X server beside the compositor serves: it sees the
/// combination while one of its windows has the focus. One combination is in force at a time.
class HotkeyRoute final : public QObject, public HotkeyRegistration
{
    Q_OBJECT

public:
    using Ways = std::deque<std::unique_ptr<DesktopHotkeys>>;

    /// `fallback` is null where there is no X server.
    HotkeyRoute(Ways ways, std::unique_ptr<HotkeyRegistration> fallback);
    ~HotkeyRoute() override;

    void setPressedHandler(Handler handler) override;
    void setReleasedHandler(Handler handler) override;
    void setStatusHandler(StatusHandler handler) override { m_status = std::move(handler); }
    [[nodiscard]] tl::expected<Reference, Status>
    registerHotkey(KeyCombination combination, HotkeyIdentifier identifier) override;
    [[nodiscard]] bool isPending(Reference reference) const override;
    void unregisterHotkey(Reference reference) override;
    [[nodiscard]] HotkeyAbilities abilities() const override;

    /// See `DesktopHotkeys::letShortcutsThrough`.
    [[nodiscard]] std::shared_ptr<void> letShortcutsThrough();

private:
    struct Registration
    {
        Reference reference = 0;
        KeyCombination combination;
        HotkeyIdentifier identifier;
        Status status = HotkeyStatus::pending;
    };

    void askNext();
    void use(DesktopHotkeys &way);
    void useFallback();
    void registerWithFallback();
    void handleFallbackStatus(Reference reference, Status status);
    void setStatus(Status status);
    void deliver(const Handler &handler);

    Ways m_ways;
    std::unique_ptr<HotkeyRegistration> m_fallback;
    /// The front one of `m_ways` is offered.
    bool m_hasWay = false;
    /// None is.
    bool m_isFallback = false;
    Handler m_pressed;
    Handler m_released;
    StatusHandler m_status;
    Reference m_lastReference = 0;
    std::optional<Registration> m_registration;
    Reference m_fallbackReference = 0;
};

} // namespace Velloro
