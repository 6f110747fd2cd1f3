#include "Managers/HotkeyManager.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"

#include <limits>
#include <utility>

namespace Velloro {

namespace {

const QString kHotkeyKeyCode = u"VelloroHotkeyKeyCode"_s;
const QString kHotkeyModifiers = u"VelloroHotkeyModifiers"_s;

// 'VLRO', the four characters big-endian.
constexpr uint32_t hotkeySignature = 0x564C524F;
constexpr uint32_t hotkeyId = 1;

// Greater modifier values are a key event's flags, not the classic mask.
constexpr uint32_t largestClassicMask = 10'000;

/// The integer under `key`, 0 when there is none; nothing when it is no unsigned 32-bit number.
std::optional<uint32_t> storedInteger(const UserDefaults &defaults, const QString &key)
{
    const int64_t stored = defaults.get<int64_t>(key).value_or(0);
    if (stored < 0 || stored > std::numeric_limits<uint32_t>::max())
        return std::nullopt;
    return static_cast<uint32_t>(stored);
}

} // namespace

HotkeyManager::HotkeyManager(Platform &platform)
    : m_platform(platform)
{
    const auto keyCode = storedInteger(*platform.userDefaults, kHotkeyKeyCode);
    const auto modifiers = storedInteger(*platform.userDefaults, kHotkeyModifiers);
    // A combination of which either half is no possible value is no combination: half of it could
    // be a key that is needed for typing.
    if (keyCode.value_or(0) != 0 && modifiers) {
        m_currentKeyCode = *keyCode;
        m_currentModifiers = *modifiers;
    }
}

HotkeyManager::~HotkeyManager()
{
    cleanup();
}

void HotkeyManager::registerHotkey()
{
    unregisterHotkey();
    HotkeyRegistration &registration = *m_platform.hotkeyRegistration;
    if (!m_handlersInstalled) {
        registration.setPressedHandler(
            [this](const HotkeyIdentifier *identifier) { handleHotkeyEvent(identifier); });
        registration.setReleasedHandler(
            [this](const HotkeyIdentifier *identifier) { handleHotkeyRelease(identifier); });
        registration.setToggledHandler(
            [this](const HotkeyIdentifier *identifier) { handleHotkeyToggle(identifier); });
        registration.setStatusHandler(
            [this](HotkeyRegistration::Reference reference, HotkeyRegistration::Status status) {
                handleStatusChange(reference, status);
            });
        m_handlersInstalled = true;
    }

    reportStatus(tryToRegister());
}

std::optional<int32_t> HotkeyManager::tryToRegister()
{
    const auto registered = m_platform.hotkeyRegistration->registerHotkey(
        {m_currentKeyCode, m_currentModifiers}, {hotkeySignature, hotkeyId});
    m_isRefused = !registered;
    if (!registered)
        return registered.error();
    m_hotkeyRef = *registered;
    if (m_platform.hotkeyRegistration->isPending(m_hotkeyRef))
        return HotkeyStatus::pending;
    return std::nullopt;
}

void HotkeyManager::reportStatus(std::optional<int32_t> status)
{
    refreshAbilities();
    if (status == HotkeyStatus::pending) {
        // Told when it is known.
    } else if (status) {
        Log::line(u"HotkeyManager", u"Failed to register hotkey: %1"_s.arg(*status));
    } else {
        Log::line(u"HotkeyManager", u"Registered hotkey: %1"_s.arg(hotkeyDisplayString()));
    }
    if (std::exchange(m_registrationStatus, status) != status)
        Q_EMIT registrationStatusChanged();
}

void HotkeyManager::refreshAbilities()
{
    const HotkeyAbilities abilities = m_platform.hotkeyRegistration->abilities();
    if (std::exchange(m_abilities, abilities) != abilities)
        Q_EMIT abilitiesChanged();
}

void HotkeyManager::unregisterHotkey()
{
    m_isRefused = false;
    if (m_hotkeyRef != 0)
        m_platform.hotkeyRegistration->unregisterHotkey(std::exchange(m_hotkeyRef, 0));
}

void HotkeyManager::updateHotkey(uint32_t keyCode, uint32_t modifiers)
{
    setCurrentKeyCode(keyCode);
    setCurrentModifiers(modifiers);
    registerHotkey();
    Log::line(u"HotkeyManager", u"Updated hotkey to: %1"_s.arg(hotkeyDisplayString()));
}

void HotkeyManager::cleanup()
{
    unregisterHotkey();
    if (m_handlersInstalled) {
        m_platform.hotkeyRegistration->setPressedHandler({});
        m_platform.hotkeyRegistration->setReleasedHandler({});
        m_platform.hotkeyRegistration->setToggledHandler({});
        m_platform.hotkeyRegistration->setStatusHandler({});
        m_handlersInstalled = false;
    }
    m_onHotkeyPressed = {};
    m_onHotkeyReleased = {};
    m_onHotkeyToggled = {};
}

void HotkeyManager::setIsPaused(bool paused)
{
    if (std::exchange(m_isPaused, paused) != paused)
        Q_EMIT isPausedChanged();
}

QString HotkeyManager::hotkeyDisplayString() const
{
    return string(m_currentKeyCode, m_currentModifiers);
}

QString HotkeyManager::string(uint32_t keyCode, uint32_t modifiers)
{
    const uint32_t mask = modifiers > largestClassicMask ? nsEventToCarbonModifiers(modifiers)
                                                         : modifiers;
    QString text;
    if (mask & cmdKey)
        text += u'⌘';
    if (mask & controlKey)
        text += u'⌃';
    if (mask & optionKey)
        text += u'⌥';
    if (mask & shiftKey)
        text += u'⇧';

    switch (keyCode) {
    case 0:
        return text;
    case 36:
        return text + u"Return"_s;
    case 48:
        return text + u"Tab"_s;
    case 49:
        return text + u"Space"_s;
    case 53:
        return text + u"Esc"_s;
    default:
        return text + keyString(static_cast<int>(keyCode));
    }
}

uint32_t HotkeyManager::nsEventToCarbonModifiers(uint32_t flags)
{
    return (flags & EventFlag::command ? cmdKey : 0) | (flags & EventFlag::option ? optionKey : 0)
        | (flags & EventFlag::control ? controlKey : 0) | (flags & EventFlag::shift ? shiftKey : 0);
}

QString HotkeyManager::keyString(int keyCode)
{
    // By virtual key code: the keys of a US keyboard.
    static constexpr const char16_t *names[127] = {
        u"A",    u"S",    u"D",    u"F",    u"H",    u"G",    u"Z",    u"X",
        u"C",    u"V", // 0
        nullptr, u"B",    u"Q",    u"W",    u"E",    u"R",    u"Y",    u"T",
        u"1",    u"2", // 10
        u"3",    u"4",    u"6",    u"5",    u"=",    u"9",    u"7",    u"-",
        u"8",    u"0", // 20
        u"]",    u"O",    u"U",    u"[",    u"I",    u"P",    nullptr, u"L",
        u"J",    u"'", // 30
        u"K",    u";",    u"\\",   u",",    u"/",    u"N",    u"M",    u".",
        nullptr, nullptr, // 40
        u"`",    u"⌫",    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
        nullptr, nullptr, // 50
        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
        nullptr, nullptr, nullptr, nullptr, u"F5",   u"F6",   u"F7",   u"F3", // 90
        u"F8",   u"F9",   nullptr, u"F11",  nullptr, nullptr, nullptr, nullptr,
        nullptr, u"F10", // 100
        nullptr, u"F12",  nullptr, nullptr, nullptr, u"Home", u"PgUp", u"⌦",
        u"F4",   u"End",                                            // 110
        u"F2",   u"PgDn", u"F1",   u"←",    u"→",    u"↓",    u"↑", // 120
    };
    if (keyCode < 0 || keyCode >= static_cast<int>(std::size(names)) || !names[keyCode])
        return u"?"_s;
    return QString::fromUtf16(names[keyCode]);
}

void HotkeyManager::handleHotkeyEvent(const HotkeyIdentifier *identifier)
{
    if (!identifier || identifier->id != hotkeyId)
        return;
    if (m_isPaused) {
        Q_EMIT pressedWhilePaused();
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!std::exchange(m_isHotkeyPressed, true))
                Q_EMIT isHotkeyPressedChanged();
            if (const Callback callback = m_onHotkeyPressed)
                callback();
        },
        Qt::QueuedConnection);
}

void HotkeyManager::handleHotkeyRelease(const HotkeyIdentifier *identifier)
{
    if (!identifier || identifier->id != hotkeyId)
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (std::exchange(m_isHotkeyPressed, false))
                Q_EMIT isHotkeyPressedChanged();
            if (const Callback callback = m_onHotkeyReleased)
                callback();
        },
        Qt::QueuedConnection);
}

void HotkeyManager::handleHotkeyToggle(const HotkeyIdentifier *identifier)
{
    if (!identifier || identifier->id != hotkeyId || m_isPaused)
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (const Callback callback = m_onHotkeyToggled)
                callback();
        },
        Qt::QueuedConnection);
}

void HotkeyManager::handleStatusChange(HotkeyRegistration::Reference reference,
                                       HotkeyRegistration::Status status)
{
    refreshAbilities();
    if (reference != m_hotkeyRef || (reference == 0 && !m_isRefused))
        return;
    std::optional<int32_t> current;
    if (reference == 0)
        current = tryToRegister();
    else if (status != 0)
        current = status;
    if (current != m_registrationStatus)
        reportStatus(current);
}

void HotkeyManager::setCurrentKeyCode(uint32_t keyCode)
{
    const bool changed = std::exchange(m_currentKeyCode, keyCode) != keyCode;
    m_platform.userDefaults->setValue(kHotkeyKeyCode, static_cast<int64_t>(keyCode));
    if (changed) {
        Q_EMIT currentKeyCodeChanged();
        Q_EMIT hotkeyDisplayStringChanged();
    }
}

void HotkeyManager::setCurrentModifiers(uint32_t modifiers)
{
    const bool changed = std::exchange(m_currentModifiers, modifiers) != modifiers;
    m_platform.userDefaults->setValue(kHotkeyModifiers, static_cast<int64_t>(modifiers));
    if (changed) {
        Q_EMIT currentModifiersChanged();
        Q_EMIT hotkeyDisplayStringChanged();
    }
}

} // namespace Velloro
