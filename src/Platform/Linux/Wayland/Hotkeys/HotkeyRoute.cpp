#include "Platform/Linux/Wayland/Hotkeys/HotkeyRoute.h"

#include <utility>

namespace Velloro {

HotkeyRoute::HotkeyRoute(Ways ways, std::unique_ptr<HotkeyRegistration> fallback)
    : m_ways(std::move(ways))
    , m_fallback(std::move(fallback))
{
    if (m_fallback) {
        m_fallback->setStatusHandler([this](Reference reference, Status status) {
            handleFallbackStatus(reference, status);
        });
    }
    askNext();
}

HotkeyRoute::~HotkeyRoute()
{
    m_status = {};
}

void HotkeyRoute::askNext()
{
    if (m_ways.empty()) {
        useFallback();
        return;
    }
    m_ways.front()->look([this](bool isOffered) {
        if (isOffered) {
            use(*m_ways.front());
            return;
        }
        // Not now: the way is calling.
        m_ways.front().release()->deleteLater();
        m_ways.pop_front();
        askNext();
    });
}

void HotkeyRoute::use(DesktopHotkeys &way)
{
    m_hasWay = true;
    connect(&way, &DesktopHotkeys::pressed, this, [this] { deliver(m_pressed); });
    connect(&way, &DesktopHotkeys::released, this, [this] { deliver(m_released); });
    connect(&way, &DesktopHotkeys::statusChanged, this, &HotkeyRoute::setStatus);
    if (m_registration)
        way.bind(m_registration->combination);
}

void HotkeyRoute::useFallback()
{
    m_isFallback = true;
    if (m_registration)
        registerWithFallback();
}

void HotkeyRoute::registerWithFallback()
{
    if (!m_fallback) {
        setStatus(HotkeyStatus::unavailable);
        return;
    }
    const auto registered
        = m_fallback->registerHotkey(m_registration->combination, m_registration->identifier);
    m_fallbackReference = registered.value_or(0);
    setStatus(registered ? 0 : registered.error());
}

void HotkeyRoute::handleFallbackStatus(Reference reference, Status status)
{
    if (!m_registration) {
        // What was refused may be tried again.
        if (const StatusHandler handler = m_status; handler && reference == 0)
            handler(reference, status);
        return;
    }
    if (reference != m_fallbackReference)
        return;
    if (reference == 0)
        registerWithFallback();
    else
        setStatus(status);
}

void HotkeyRoute::setStatus(Status status)
{
    if (!m_registration || std::exchange(m_registration->status, status) == status)
        return;
    if (const StatusHandler handler = m_status)
        handler(m_registration->reference, status);
}

void HotkeyRoute::deliver(const Handler &handler)
{
    if (const Handler current = handler; current && m_registration) {
        const HotkeyIdentifier identifier = m_registration->identifier;
        current(&identifier);
    }
}

void HotkeyRoute::setPressedHandler(Handler handler)
{
    m_pressed = handler;
    if (m_fallback)
        m_fallback->setPressedHandler(std::move(handler));
}

void HotkeyRoute::setReleasedHandler(Handler handler)
{
    m_released = handler;
    if (m_fallback)
        m_fallback->setReleasedHandler(std::move(handler));
}

tl::expected<HotkeyRegistration::Reference, HotkeyRegistration::Status>
HotkeyRoute::registerHotkey(KeyCombination combination, HotkeyIdentifier identifier)
{
    if (m_registration)
        unregisterHotkey(m_registration->reference);
    m_registration = {++m_lastReference, combination, identifier, HotkeyStatus::pending};
    if (m_hasWay) {
        m_ways.front()->bind(combination);
    } else if (m_isFallback) {
        // Its outcome is known now, and returned instead of told.
        const StatusHandler handler = std::exchange(m_status, {});
        registerWithFallback();
        m_status = handler;
    }
    if (m_registration->status == 0 || isPending(m_lastReference))
        return m_lastReference;
    const Status refusal = m_registration->status;
    m_registration.reset();
    return tl::unexpected(refusal);
}

bool HotkeyRoute::isPending(Reference reference) const
{
    return m_registration && m_registration->reference == reference
        && m_registration->status == HotkeyStatus::pending;
}

void HotkeyRoute::unregisterHotkey(Reference reference)
{
    if (!m_registration || m_registration->reference != reference)
        return;
    if (m_hasWay)
        m_ways.front()->unbind();
    else if (m_fallbackReference != 0)
        m_fallback->unregisterHotkey(std::exchange(m_fallbackReference, 0));
    m_registration.reset();
}

HotkeyAbilities HotkeyRoute::abilities() const
{
    return {.coversAllWindows = !m_isFallback};
}

std::shared_ptr<void> HotkeyRoute::letShortcutsThrough()
{
    return m_hasWay ? m_ways.front()->letShortcutsThrough() : nullptr;
}

} // namespace Velloro
