#pragma once

#include "Platform/HotkeyRegistration.h"
#include "Platform/Linux/HeldKey.h"
#include "Platform/Linux/Process/HotkeyCommand.h"

#include <QObject>
#include <chrono>
#include <memory>
#include <optional>

namespace Velloro {

/// The hotkey of the desktop, and beside it, on every desktop, the one that the user has bound to
/// the program's commands in the desktop's settings.
///
/// A desktop may run such a command again and again while its key is held, and two commands may
/// overtake each other on their way.
class CommandHotkeys final : public QObject, public HotkeyRegistration
{
    Q_OBJECT

public:
    /// Longer than it takes until a held key repeats.
    static constexpr std::chrono::milliseconds defaultRepetition{700};

    /// A press that follows the last one by less than `repetition`, without a release, counts as
    /// the same.
    explicit CommandHotkeys(std::unique_ptr<HotkeyRegistration> desktop,
                            std::chrono::milliseconds repetition = defaultRepetition);
    ~CommandHotkeys() override;

    void handle(const HotkeyCommand &command);

    void setPressedHandler(Handler handler) override;
    void setReleasedHandler(Handler handler) override;
    void setToggledHandler(Handler handler) override;
    void setStatusHandler(StatusHandler handler) override;
    [[nodiscard]] tl::expected<Reference, Status>
    registerHotkey(KeyCombination combination, HotkeyIdentifier identifier) override;
    [[nodiscard]] bool isPending(Reference reference) const override;
    void unregisterHotkey(Reference reference) override;
    /// Those of the desktop's hotkey. Where there is none, releases are told once a command for
    /// them has come.
    [[nodiscard]] HotkeyAbilities abilities() const override;

private:
    void press(int64_t startedAt);
    void release(int64_t startedAt);
    void deliver(const Handler &handler);
    void handleStatus(Reference reference, Status status);

    std::unique_ptr<HotkeyRegistration> m_desktop;
    Handler m_pressed;
    Handler m_released;
    Handler m_toggled;
    StatusHandler m_status;
    /// Of the combination that was registered last, whether or not the desktop has it.
    std::optional<HotkeyIdentifier> m_identifier;
    Reference m_reference = 0;
    Status m_desktopStatus = HotkeyStatus::unavailable;
    HeldKey m_pressKey;
    HeldKey m_toggleKey;
    /// The start of the last release that came without a press.
    int64_t m_earlyRelease = 0;
    bool m_hasRelease = false;
};

} // namespace Velloro
