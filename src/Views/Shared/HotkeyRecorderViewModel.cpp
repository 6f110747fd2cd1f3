#include "Views/Shared/HotkeyRecorderViewModel.h"

#include "Views/Shared/HotkeyProblem.h"

#include <algorithm>
#include <utility>

namespace Velloro {

namespace {

/// Command, Shift, Caps Lock, Option and Control, on either side.
constexpr uint32_t modifierKeyCodes[] = {54, 55, 56, 57, 58, 59, 60, 61, 62};

/// The lower bits tell apart the sides of the keyboard and are ignored.
constexpr uint32_t deviceIndependent(uint32_t modifierFlags)
{
    return modifierFlags & 0xffff'0000;
}

} // namespace

HotkeyRecorderViewModel::HotkeyRecorderViewModel(HotkeyManager &hotkeyManager,
                                                 KeyEventMonitor &keyEventMonitor, QObject *parent)
    : QObject(parent)
    , m_hotkeyManager(hotkeyManager)
    , m_keyEventMonitor(keyEventMonitor)
{
    connect(&hotkeyManager, &HotkeyManager::registrationStatusChanged, this,
            &HotkeyRecorderViewModel::problemChanged);
    connect(&hotkeyManager, &HotkeyManager::hotkeyDisplayStringChanged, this, [this] {
        Q_EMIT displayStringChanged();
        if (m_hotkeyManager.registrationStatus())
            Q_EMIT problemChanged();
    });
    // The combination in force is kept from the windows; it can be chosen again all the same.
    connect(&hotkeyManager, &HotkeyManager::pressedWhilePaused, this, [this] {
        if (isRecording())
            accept(m_hotkeyManager.currentKeyCode(), m_hotkeyManager.currentModifiers());
    });
}

HotkeyRecorderViewModel::~HotkeyRecorderViewModel()
{
    if (isRecording())
        m_hotkeyManager.setIsPaused(false);
}

QString HotkeyRecorderViewModel::problem() const
{
    if (m_isKeyRefused)
        return tr("AltGr can't be part of a hotkey, only Control, Alt, Shift and Super.");
    if (m_monitor && !m_monitor->seesDesktopShortcuts())
        return tr("Combinations that the desktop has itself do not arrive here.");
    return hotkeyProblem(m_hotkeyManager.registrationStatus(),
                         m_hotkeyManager.hotkeyDisplayString(), HotkeyProblemPlace::recorder);
}

void HotkeyRecorderViewModel::toggle()
{
    if (isRecording())
        stop();
    else
        start();
}

void HotkeyRecorderViewModel::start()
{
    setTempDisplayString({});
    setIsKeyRefused(false);
    m_hotkeyManager.setIsPaused(true);
    m_monitor = m_keyEventMonitor.addLocalMonitor(
        [this](const KeyEvent &event) { return handle(event); });
    Q_EMIT isRecordingChanged();
    Q_EMIT problemChanged();
}

void HotkeyRecorderViewModel::stop()
{
    if (!isRecording())
        return;
    m_hotkeyManager.setIsPaused(false);
    m_monitor.reset();
    setIsKeyRefused(false);
    Q_EMIT isRecordingChanged();
    Q_EMIT problemChanged();
}

bool HotkeyRecorderViewModel::handle(const KeyEvent &event)
{
    const uint32_t flags = deviceIndependent(event.modifierFlags);
    if (event.type == KeyEvent::Type::flagsChanged)
        setTempDisplayString(HotkeyManager::string(0, flags));
    else if (event.hasOtherModifier)
        // Without that modifier it would be another combination, perhaps a key needed for typing.
        setIsKeyRefused(true);
    else if (!std::ranges::count(modifierKeyCodes, event.keyCode))
        accept(event.keyCode, HotkeyManager::nsEventToCarbonModifiers(flags));
    return true;
}

void HotkeyRecorderViewModel::accept(uint32_t keyCode, uint32_t modifiers)
{
    m_hotkeyManager.updateHotkey(keyCode, modifiers);
    // Not now: the monitor is calling.
    QMetaObject::invokeMethod(this, &HotkeyRecorderViewModel::stop, Qt::QueuedConnection);
}

void HotkeyRecorderViewModel::setIsKeyRefused(bool refused)
{
    if (std::exchange(m_isKeyRefused, refused) != refused)
        Q_EMIT problemChanged();
}

void HotkeyRecorderViewModel::setTempDisplayString(const QString &text)
{
    if (std::exchange(m_tempDisplayString, text) != text)
        Q_EMIT tempDisplayStringChanged();
}

} // namespace Velloro
