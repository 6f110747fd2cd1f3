#include "Platform/Linux/Process/CommandHotkeys.h"

#include <utility>

namespace Velloro {

CommandHotkeys::CommandHotkeys(std::unique_ptr<HotkeyRegistration> desktop,
                               std::chrono::milliseconds repetition)
    : m_desktop(std::move(desktop))
    , m_pressKey(repetition)
    , m_toggleKey(repetition)
{
}

CommandHotkeys::~CommandHotkeys() = default;

void CommandHotkeys::handle(const HotkeyCommand &command)
{
    switch (command.verb) {
    case HotkeyVerb::press:
        press(command.startedAt);
        break;
    case HotkeyVerb::release:
        release(command.startedAt);
        break;
    case HotkeyVerb::toggle:
        if (m_toggleKey.press() != HeldKey::Press::repeated)
            deliver(m_toggled);
        break;
    }
}

void CommandHotkeys::press(int64_t startedAt)
{
    switch (m_pressKey.press()) {
    case HeldKey::Press::repeated:
        return;
    case HeldKey::Press::afterLostRelease:
        deliver(m_released);
        break;
    case HeldKey::Press::first:
        break;
    }
    deliver(m_pressed);
    // It was overtaken by its release.
    if (std::exchange(m_earlyRelease, 0) > startedAt)
        release(startedAt);
}

void CommandHotkeys::release(int64_t startedAt)
{
    if (m_pressKey.release())
        deliver(m_released);
    else
        m_earlyRelease = startedAt;
    if (!std::exchange(m_hasRelease, true))
        handleStatus(m_reference, m_reference == 0 ? 0 : m_desktopStatus);
}

void CommandHotkeys::deliver(const Handler &handler)
{
    if (const Handler current = handler; current && m_identifier)
        current(&*m_identifier);
}

void CommandHotkeys::setPressedHandler(Handler handler)
{
    m_pressed = handler;
    m_desktop->setPressedHandler(std::move(handler));
}

void CommandHotkeys::setReleasedHandler(Handler handler)
{
    m_released = handler;
    m_desktop->setReleasedHandler(std::move(handler));
}

void CommandHotkeys::setToggledHandler(Handler handler)
{
    m_toggled = handler;
    m_desktop->setToggledHandler(std::move(handler));
}

void CommandHotkeys::setStatusHandler(StatusHandler handler)
{
    m_status = std::move(handler);
    m_desktop->setStatusHandler(
        [this](Reference reference, Status status) { handleStatus(reference, status); });
}

void CommandHotkeys::handleStatus(Reference reference, Status status)
{
    if (reference != 0 && reference == m_reference)
        m_desktopStatus = status;
    if (const StatusHandler handler = m_status)
        handler(reference, status);
}

tl::expected<HotkeyRegistration::Reference, HotkeyRegistration::Status>
CommandHotkeys::registerHotkey(KeyCombination combination, HotkeyIdentifier identifier)
{
    m_identifier = identifier;
    const auto registered = m_desktop->registerHotkey(combination, identifier);
    m_reference = registered.value_or(0);
    m_desktopStatus = registered ? 0 : registered.error();
    return registered;
}

bool CommandHotkeys::isPending(Reference reference) const
{
    return m_desktop->isPending(reference);
}

void CommandHotkeys::unregisterHotkey(Reference reference)
{
    if (reference == m_reference) {
        m_identifier.reset();
        m_reference = 0;
    }
    m_desktop->unregisterHotkey(reference);
}

HotkeyAbilities CommandHotkeys::abilities() const
{
    if (m_desktopStatus == HotkeyStatus::unavailable)
        return {.tellsReleases = m_hasRelease};
    return m_desktop->abilities();
}

} // namespace Velloro
