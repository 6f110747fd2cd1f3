#pragma once

#include "Platform/KeyCombination.h"

#include <cstdint>
#include <functional>
#include <tl/expected.hpp>

namespace Velloro {

/// The identifier that a registration carries and its events bring back.
struct HotkeyIdentifier
{
    uint32_t signature = 0;
    uint32_t id = 0;

    friend bool operator==(const HotkeyIdentifier &, const HotkeyIdentifier &) = default;
};

/// What the statuses of refusals say, on every system. There are others, without a known meaning.
namespace HotkeyStatus {
inline constexpr int32_t
    /// This desktop offers no hotkey to a program: no other combination would help.
    unavailable
    = 1,
    /// The key or a modifier is on no keyboard here, or there is no keyboard.
    notOnKeyboard = 2,
    /// Another program, or the desktop itself, holds the combination.
    taken = 10,
    /// The desktop asked the user, who did not want it.
    declined = 256,
    /// No refusal: the desktop has yet to answer, and may be asking the user.
    pending = 257;
} // namespace HotkeyStatus

/// What a hotkey does where the desktop lets it do less than it should.
struct HotkeyAbilities
{
    /// A press is followed by its release. Otherwise only `toggled` is told.
    bool tellsReleases = true;
    /// It is seen whichever window has the focus, not over those of the X server alone.
    bool coversAllWindows = true;

    friend bool operator==(const HotkeyAbilities &, const HotkeyAbilities &) = default;
};

/// System-wide key combinations, seen whichever application has the keyboard focus.
///
/// Called on the main thread; handlers are called there, too.
class HotkeyRegistration
{
public:
    /// A registration that is in force; 0 is none.
    using Reference = uint64_t;
    /// A numeric status other than 0: why the system refused (see `HotkeyStatus`).
    using Status = int32_t;
    /// Receives the identifier of the combination; nothing when it could not be read.
    using Handler = std::function<void(const HotkeyIdentifier *)>;
    /// Receives a change of a registration's status, 0 when it is in force again.
    using StatusHandler = std::function<void(Reference, Status)>;

    virtual ~HotkeyRegistration() = default;

    /// Installs the handler of presses: one call per physical press, none for auto-repeat,
    /// whatever Caps Lock, Num Lock and the layout group are. Empty removes it.
    virtual void setPressedHandler(Handler handler) = 0;
    /// Installs the handler of releases: one call per physical release. Empty removes it.
    virtual void setReleasedHandler(Handler handler) = 0;
    /// Installs the handler of presses of which nobody will tell the release. Empty removes it.
    virtual void setToggledHandler(Handler handler) { (void)handler; }

    /// Installs the handler of what changes of the layout or of the keyboards do to registrations:
    /// one call when a registration is no longer in force on every keyboard, and one when it is
    /// again. One with the reference 0 says that what was refused by `registerHotkey` may be
    /// available now. The handler may register and unregister. Empty removes it. The abilities may
    /// have changed with each call.
    virtual void setStatusHandler(StatusHandler handler) = 0;

    /// Registers the combination, or says with a status why it is unavailable (for one, because
    /// another program holds it). It follows layout and keyboard changes from then on, and is tried
    /// again with each of them while it is not in force. Where `isPending` says so the desktop has
    /// yet to answer; the status handler is told what.
    [[nodiscard]] virtual tl::expected<Reference, Status>
    registerHotkey(KeyCombination combination, HotkeyIdentifier identifier) = 0;

    [[nodiscard]] virtual bool isPending(Reference reference) const
    {
        (void)reference;
        return false;
    }

    /// Gives the combination back. Unknown references are ignored.
    virtual void unregisterHotkey(Reference reference) = 0;

    [[nodiscard]] virtual HotkeyAbilities abilities() const { return {}; }
};

} // namespace Velloro
