#pragma once

#include "Platform/HotkeyRegistration.h"
#include "Platform/Linux/DisplayServer.h"
#include "Platform/Linux/X11/Keyboard/X11Keyboards.h"
#include "Platform/Linux/X11/Keyboard/X11Keymap.h"
#include "Platform/Linux/X11/X11FocusWatch.h"

#include <QObject>
#include <QTimer>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace Velloro {

/// System-wide key combinations on an X server, as passive grabs on each keyboard.
///
/// A grab on a master keyboard would keep synthetic strokes from the application until the key is
/// released; one on the keyboard itself leaves them alone, and dictation can type while the user
/// holds the combination. The device of synthetic strokes is grabbed as well, for on-screen
/// keyboards; what this program sends from there itself is let pass. Such a grab is not refused
/// where another program holds the combination on the master, so that is asked first.
///
/// Beside a Wayland compositor the server hears nothing more of a key, its release included, once
/// the focus is on a window that is not the server's: a press ends there.
///
/// The statuses are the X error codes; those with a known meaning are the ones of `HotkeyStatus`.
class X11HotkeyRegistration final : public QObject, public HotkeyRegistration
{
    Q_OBJECT

public:
    /// A null connection makes every registration fail.
    explicit X11HotkeyRegistration(std::shared_ptr<X11Connection> connection,
                                   DisplayServer server = DisplayServer::x11);
    ~X11HotkeyRegistration() override;

    void setPressedHandler(Handler handler) override { m_pressed = std::move(handler); }
    void setReleasedHandler(Handler handler) override { m_released = std::move(handler); }
    void setStatusHandler(StatusHandler handler) override { m_status = std::move(handler); }
    [[nodiscard]] tl::expected<Reference, Status>
    registerHotkey(KeyCombination combination, HotkeyIdentifier identifier) override;
    void unregisterHotkey(Reference reference) override;

private:
    /// A combination as the server knows it.
    struct Grab
    {
        uint8_t keycode = 0;
        /// Each state of the modifiers under which the key is the combination.
        std::vector<uint32_t> modifierStates;

        friend bool operator==(const Grab &, const Grab &) = default;
    };
    struct Registration
    {
        KeyCombination combination;
        HotkeyIdentifier identifier;
        Grab grab;
        /// 0 while it is in force.
        Status status = 0;
    };
    using Registrations = std::map<Reference, Registration>;
    /// What is known of registrations after a change, to be told once that is over.
    using Statuses = std::vector<std::pair<Reference, Status>>;
    /// The combination that is down.
    struct Press
    {
        Reference reference = 0;
        HotkeyIdentifier identifier;
        uint16_t device = 0;
        uint8_t keycode = 0;
        /// From the device of synthetic strokes.
        bool isSynthetic = false;
    };

    [[nodiscard]] std::optional<Grab> makeGrab(KeyCombination combination);
    /// Why another program's grab stands against this one; 0 when none does.
    [[nodiscard]] Status conflict(const Grab &grab);
    /// Grabs on one keyboard; 0 on success. Nothing is grabbed there after a failure.
    Status grabOn(uint16_t device, const Grab &grab);
    /// Grabs on as many keyboards as can be had; 0 when none was refused and there is one.
    [[nodiscard]] Status grabOnAllKeyboards(const Grab &grab);
    /// The same, where no other program's grab stands against it.
    [[nodiscard]] Status grabUnlessTaken(const Grab &grab);
    void ungrabOn(uint16_t device, const Grab &grab);
    void ungrabOnAllKeyboards(const Grab &grab);

    void handleEvent(const xcb_generic_event_t *event);
    /// The registration whose grab a press of this key has made active; null for another key.
    [[nodiscard]] const Registrations::value_type *registrationOf(uint8_t keycode) const;
    void handleKeyPress(uint16_t device, uint8_t keycode);
    void handleKeyRelease(uint16_t device, uint8_t keycode);
    void handleHierarchyChange(const xcb_generic_event_t *event);
    void handleKeymapChange();
    /// A key that this program sends itself is no press, and goes to the application.
    void letOwnKeyPass(uint8_t keycode);
    void regrabAfterOwnKey(uint8_t keycode);
    /// Grabs or ungrabs what has this key on the devices of synthetic strokes.
    template <typename Result>
    void forEachSyntheticGrab(uint8_t keycode,
                              Result (X11HotkeyRegistration::*change)(uint16_t, const Grab &));
    /// Tells the changes, and that what was refused may be tried again.
    void tellStatuses(const Statuses &statuses);
    /// Delivers the release of what is down, if anything is.
    void endPress();
    /// Releases for the applications what was released on a keyboard while its grab was active.
    void passOnReleases();

    std::shared_ptr<X11Connection> m_connection;
    std::unique_ptr<X11Keymap> m_keymap;
    std::unique_ptr<X11Keyboards> m_keyboards;
    std::unique_ptr<X11FocusWatch> m_focusWatch;
    Handler m_pressed;
    Handler m_released;
    StatusHandler m_status;
    Reference m_lastReference = 0;
    Registrations m_registrations;
    std::optional<Press> m_press;
    QTimer m_keymapChange;
};

} // namespace Velloro
