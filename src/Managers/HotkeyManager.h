#pragma once

#include "Platform/ModifierKeys.h"
#include "Platform/Platform.h"

#include <QObject>
#include <cstdint>
#include <functional>
#include <optional>

namespace Velloro {

/// The one system-wide key combination that starts and stops dictation. Main thread only.
///
/// Key codes are virtual key codes; modifier masks are Command 256, Shift 512, Option 2048 and
/// Control 4096. The default is Option+Space (49, 2048).
class HotkeyManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isHotkeyPressed READ isHotkeyPressed NOTIFY isHotkeyPressedChanged)
    Q_PROPERTY(bool isPaused READ isPaused WRITE setIsPaused NOTIFY isPausedChanged)
    Q_PROPERTY(uint currentKeyCode READ currentKeyCode NOTIFY currentKeyCodeChanged)
    Q_PROPERTY(uint currentModifiers READ currentModifiers NOTIFY currentModifiersChanged)
    Q_PROPERTY(
        QString hotkeyDisplayString READ hotkeyDisplayString NOTIFY hotkeyDisplayStringChanged)

public:
    using Callback = std::function<void()>;

    static constexpr uint32_t cmdKey = ClassicMask::command;
    static constexpr uint32_t shiftKey = ClassicMask::shift;
    static constexpr uint32_t optionKey = ClassicMask::option;
    static constexpr uint32_t controlKey = ClassicMask::control;

    /// Reads the stored combination. The process has one, made with the program and handed down;
    /// `platform` outlives it.
    explicit HotkeyManager(Platform &platform);
    ~HotkeyManager() override;

    /// (Re-)registers the current combination. A refusal is logged with its status.
    void registerHotkey();
    /// Removes the current registration, if any.
    void unregisterHotkey();
    /// Stores, persists and re-registers a new combination. It is not validated.
    void updateHotkey(uint32_t keyCode, uint32_t modifiers);
    /// Unregisters, removes the event handlers and clears both callbacks; harmless when repeated.
    void cleanup();

    /// Called on the main thread for each delivered press and release.
    void setOnHotkeyPressed(Callback callback) { m_onHotkeyPressed = std::move(callback); }
    void setOnHotkeyReleased(Callback callback) { m_onHotkeyReleased = std::move(callback); }
    /// Called on the main thread for each delivered press of which nobody tells the release.
    void setOnHotkeyToggled(Callback callback) { m_onHotkeyToggled = std::move(callback); }

    /// True between a delivered press and the next delivered release.
    [[nodiscard]] bool isHotkeyPressed() const { return m_isHotkeyPressed; }
    /// While true, presses are ignored (releases are not).
    [[nodiscard]] bool isPaused() const { return m_isPaused; }
    void setIsPaused(bool paused);
    [[nodiscard]] uint32_t currentKeyCode() const { return m_currentKeyCode; }
    [[nodiscard]] uint32_t currentModifiers() const { return m_currentModifiers; }
    /// Why the combination could not be registered, or is not in force; nothing while it is.
    [[nodiscard]] std::optional<int32_t> registrationStatus() const { return m_registrationStatus; }
    [[nodiscard]] HotkeyAbilities abilities() const { return m_abilities; }

    /// The current combination as it is shown.
    [[nodiscard]] QString hotkeyDisplayString() const;
    /// A combination as it is shown: modifier symbols, then the key's name. Modifiers of 10,000 or
    /// less are the classic mask, greater ones a key event's modifier flags.
    [[nodiscard]] static QString string(uint32_t keyCode, uint32_t modifiers);
    /// A key event's device-independent modifier flags as the classic mask.
    [[nodiscard]] static uint32_t nsEventToCarbonModifiers(uint32_t flags);

Q_SIGNALS:
    void isHotkeyPressedChanged();
    void isPausedChanged();
    void currentKeyCodeChanged();
    void currentModifiersChanged();
    void hotkeyDisplayStringChanged();
    void registrationStatusChanged();
    void abilitiesChanged();
    /// The combination was pressed while paused. The window that has the focus may not see it.
    void pressedWhilePaused();

private:
    static QString keyString(int keyCode);
    void handleHotkeyEvent(const HotkeyIdentifier *identifier);
    void handleHotkeyRelease(const HotkeyIdentifier *identifier);
    void handleHotkeyToggle(const HotkeyIdentifier *identifier);
    void handleStatusChange(HotkeyRegistration::Reference reference,
                            HotkeyRegistration::Status status);
    [[nodiscard]] std::optional<int32_t> tryToRegister();
    /// Logs and tells the outcome of a registration.
    void reportStatus(std::optional<int32_t> status);
    void refreshAbilities();
    void setCurrentKeyCode(uint32_t keyCode);
    void setCurrentModifiers(uint32_t modifiers);

    Platform &m_platform;
    bool m_handlersInstalled = false;
    HotkeyRegistration::Reference m_hotkeyRef = 0;
    /// The combination was asked for and refused: tried again when that may help.
    bool m_isRefused = false;
    bool m_isHotkeyPressed = false;
    bool m_isPaused = false;
    Callback m_onHotkeyPressed;
    Callback m_onHotkeyReleased;
    Callback m_onHotkeyToggled;
    uint32_t m_currentKeyCode = 49;
    uint32_t m_currentModifiers = optionKey;
    std::optional<int32_t> m_registrationStatus;
    HotkeyAbilities m_abilities;
};

} // namespace Velloro
