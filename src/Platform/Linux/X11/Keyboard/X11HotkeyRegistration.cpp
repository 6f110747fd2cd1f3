#include "Platform/Linux/X11/Keyboard/X11HotkeyRegistration.h"

#include "Platform/Linux/X11/Keyboard/X11ModifierTap.h"
#include "Platform/Linux/X11/XcbReply.h"

#include <algorithm>
#include <utility>
#include <xcb/xinput.h>

namespace Velloro {

static_assert(HotkeyStatus::unavailable == XCB_REQUEST && HotkeyStatus::notOnKeyboard == XCB_VALUE
              && HotkeyStatus::taken == XCB_ACCESS);

X11HotkeyRegistration::X11HotkeyRegistration(std::shared_ptr<X11Connection> connection,
                                             DisplayServer server)
    : m_connection(std::move(connection))
{
    if (!m_connection)
        return;
    m_keymap = std::make_unique<X11Keymap>(m_connection);
    m_keyboards = std::make_unique<X11Keyboards>(m_connection);
    connect(m_connection.get(), &X11Connection::eventReceived, this,
            &X11HotkeyRegistration::handleEvent);
    connect(m_connection.get(), &X11Connection::ended, this, &X11HotkeyRegistration::endPress);
    connect(m_connection.get(), &X11Connection::syntheticKeyComing, this,
            &X11HotkeyRegistration::letOwnKeyPass);
    connect(m_connection.get(), &X11Connection::syntheticKeyGone, this,
            &X11HotkeyRegistration::regrabAfterOwnKey);

    // One change of the layout is told in many events, and typing alone makes some.
    m_keymapChange.setSingleShot(true);
    m_keymapChange.setInterval(0);
    connect(m_keymap.get(), &X11Keymap::changed, &m_keymapChange, qOverload<>(&QTimer::start));
    connect(&m_keymapChange, &QTimer::timeout, this, &X11HotkeyRegistration::handleKeymapChange);

    m_connection->addInputEvents(XCB_INPUT_DEVICE_ALL, XCB_INPUT_XI_EVENT_MASK_HIERARCHY);
    if (server == DisplayServer::wayland) {
        m_focusWatch = std::make_unique<X11FocusWatch>();
        connect(m_focusWatch.get(), &X11FocusWatch::left, this, &X11HotkeyRegistration::endPress);
    }
}

X11HotkeyRegistration::~X11HotkeyRegistration()
{
    m_released = {};
    while (!m_registrations.empty())
        unregisterHotkey(m_registrations.begin()->first);
}

std::optional<X11HotkeyRegistration::Grab>
X11HotkeyRegistration::makeGrab(KeyCombination combination)
{
    const auto keycode = m_keymap->keycodeAt(combination.keyCode);
    const auto needed = m_keymap->modifierMask(combination.modifiers);
    if (!keycode || !needed)
        return std::nullopt;

    // Every subset of the locking modifiers, besides those that are asked for.
    Grab grab{*keycode, {}};
    const uint32_t locks = m_keymap->lockModifiers() & ~*needed;
    for (uint32_t subset = locks;; subset = (subset - 1) & locks) {
        grab.modifierStates.push_back(*needed | subset);
        if (subset == 0)
            return grab;
    }
}

HotkeyRegistration::Status X11HotkeyRegistration::conflict(const Grab &grab)
{
    xcb_connection_t *xcb = m_connection->xcb();
    std::vector<xcb_void_cookie_t> cookies;
    for (const uint32_t state : grab.modifierStates) {
        cookies.push_back(xcb_grab_key_checked(xcb, 1, m_connection->root(),
                                               static_cast<uint16_t>(state), grab.keycode,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        xcb_ungrab_key(xcb, grab.keycode, m_connection->root(), static_cast<uint16_t>(state));
    }
    Status status = 0;
    for (const auto &cookie : cookies) {
        if (const XcbReply<xcb_generic_error_t> error{xcb_request_check(xcb, cookie)})
            status = error->error_code;
    }
    if (status != 0)
        return status;

    // Grabs of the newer kind are not seen by that.
    for (const uint16_t master : m_keyboards->masterKeyboards()) {
        status = grabOn(master, grab);
        if (status != 0)
            return status;
        ungrabOn(master, grab);
    }
    return 0;
}

HotkeyRegistration::Status X11HotkeyRegistration::grabOn(uint16_t device, const Grab &grab)
{
    const uint32_t mask = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    xcb_generic_error_t *rawError = nullptr;
    const XcbReply<xcb_input_xi_passive_grab_device_reply_t> reply(
        xcb_input_xi_passive_grab_device_reply(
            m_connection->xcb(),
            xcb_input_xi_passive_grab_device(
                m_connection->xcb(), XCB_CURRENT_TIME, m_connection->root(), XCB_CURSOR_NONE,
                grab.keycode, device, static_cast<uint16_t>(grab.modifierStates.size()), 1,
                XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
                XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, &mask,
                grab.modifierStates.data()),
            &rawError));
    const XcbReply<xcb_generic_error_t> error(rawError);
    if (!reply)
        return error ? error->error_code : XCB_REQUEST;

    // The reply lists the states that could not be had.
    Status status = 0;
    for (auto failed = xcb_input_xi_passive_grab_device_modifiers_iterator(reply.get());
         failed.rem > 0; xcb_input_grab_modifier_info_next(&failed)) {
        if (failed.data->status != XCB_GRAB_STATUS_SUCCESS)
            status = failed.data->status;
    }
    if (status != 0) {
        ungrabOn(device, grab);
        // One number for one fact, whichever way the other program holds the combination.
        if (status == XCB_GRAB_STATUS_ALREADY_GRABBED)
            status = XCB_ACCESS;
    }
    return status;
}

HotkeyRegistration::Status X11HotkeyRegistration::grabOnAllKeyboards(const Grab &grab)
{
    bool isGrabbed = false;
    Status refusal = 0;
    Status failure = XCB_VALUE;
    for (const uint16_t device : m_keyboards->physicalKeyboards()) {
        const Status result = grabOn(device, grab);
        if (result == 0)
            isGrabbed = true;
        else if (result == XCB_ACCESS)
            refusal = result;
        else
            failure = result;
    }
    // An on-screen keyboard alone is none that the user could be told to use.
    for (const uint16_t device : m_keyboards->syntheticKeyboards()) {
        if (grabOn(device, grab) == XCB_ACCESS)
            refusal = XCB_ACCESS;
    }
    if (refusal != 0)
        return refusal;
    // Beside others, a keyboard that was unplugged since it was listed is no failure.
    return isGrabbed ? 0 : failure;
}

HotkeyRegistration::Status X11HotkeyRegistration::grabUnlessTaken(const Grab &grab)
{
    const Status status = conflict(grab);
    return status != 0 ? status : grabOnAllKeyboards(grab);
}

void X11HotkeyRegistration::ungrabOn(uint16_t device, const Grab &grab)
{
    xcb_input_xi_passive_ungrab_device(m_connection->xcb(), m_connection->root(), grab.keycode,
                                       device, static_cast<uint16_t>(grab.modifierStates.size()),
                                       XCB_INPUT_GRAB_TYPE_KEYCODE, grab.modifierStates.data());
    m_connection->flush();
}

void X11HotkeyRegistration::ungrabOnAllKeyboards(const Grab &grab)
{
    if (grab.modifierStates.empty())
        return;
    for (const uint16_t device : m_keyboards->physicalKeyboards())
        ungrabOn(device, grab);
    for (const uint16_t device : m_keyboards->syntheticKeyboards())
        ungrabOn(device, grab);
    // The server has done it when it answers what was asked after it.
    xcb_connection_t *const xcb = m_connection->xcb();
    const XcbReply<xcb_get_input_focus_reply_t> answer(
        xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
}

tl::expected<HotkeyRegistration::Reference, HotkeyRegistration::Status>
X11HotkeyRegistration::registerHotkey(KeyCombination combination, HotkeyIdentifier identifier)
{
    if (!m_connection || !m_connection->isAlive() || m_connection->inputOpcode() == 0)
        return tl::unexpected<Status>(XCB_REQUEST);
    const auto grab = makeGrab(combination);
    if (!grab)
        return tl::unexpected<Status>(XCB_VALUE);
    if (const Status status = grabUnlessTaken(*grab)) {
        ungrabOnAllKeyboards(*grab);
        return tl::unexpected(status);
    }

    m_registrations[++m_lastReference] = {combination, identifier, *grab, 0};
    return m_lastReference;
}

void X11HotkeyRegistration::unregisterHotkey(Reference reference)
{
    const auto found = m_registrations.find(reference);
    if (found == m_registrations.end())
        return;
    const Registration registration = found->second;
    m_registrations.erase(found);
    if (m_connection->isAlive())
        ungrabOnAllKeyboards(registration.grab);
    if (m_press && m_press->reference == reference)
        endPress();
}

void X11HotkeyRegistration::handleEvent(const xcb_generic_event_t *event)
{
    if ((event->response_type & 0x7f) != XCB_GE_GENERIC)
        return;
    const auto *generic = reinterpret_cast<const xcb_ge_generic_event_t *>(event);
    if (generic->extension != m_connection->inputOpcode())
        return;
    switch (generic->event_type) {
    case XCB_INPUT_KEY_PRESS: {
        const auto *press = reinterpret_cast<const xcb_input_key_press_event_t *>(event);
        if (!(press->flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT)) {
            handleKeyPress(press->deviceid, static_cast<uint8_t>(press->detail));
        }
        break;
    }
    case XCB_INPUT_KEY_RELEASE: {
        const auto *release = reinterpret_cast<const xcb_input_key_release_event_t *>(event);
        handleKeyRelease(release->deviceid, static_cast<uint8_t>(release->detail));
        break;
    }
    case XCB_INPUT_RAW_KEY_RELEASE: {
        const auto *release = reinterpret_cast<const xcb_input_raw_key_release_event_t *>(event);
        if (m_press && m_press->isSynthetic)
            handleKeyRelease(release->deviceid, static_cast<uint8_t>(release->detail));
        break;
    }
    case XCB_INPUT_HIERARCHY:
        handleHierarchyChange(event);
        break;
    default:
        break;
    }
}

const X11HotkeyRegistration::Registrations::value_type *
X11HotkeyRegistration::registrationOf(uint8_t keycode) const
{
    const auto hasKey = [&](const auto &entry) { return entry.second.grab.keycode == keycode; };
    const auto first = std::ranges::find_if(m_registrations, hasKey);
    if (first == m_registrations.end())
        return nullptr;
    // The server has compared the modifiers already, those of all keyboards together; the event
    // names only its own keyboard's. They matter where the key is in several combinations.
    if (std::ranges::count_if(m_registrations, hasKey) > 1) {
        const uint8_t state = m_keyboards->modifierState();
        const auto exact = std::ranges::find_if(m_registrations, [&](const auto &entry) {
            return hasKey(entry) && std::ranges::count(entry.second.grab.modifierStates, state) > 0;
        });
        if (exact != m_registrations.end())
            return &*exact;
    }
    return &*first;
}

void X11HotkeyRegistration::handleKeyPress(uint16_t device, uint8_t keycode)
{
    // Of a keyboard that is grabbed all keys come here.
    if (m_press && m_press->device == device)
        return;
    const auto *const found = registrationOf(keycode);
    if (!found)
        return;
    Q_EMIT m_connection->hotkeyTaken(keycode);
    // The same combination on a second keyboard, while it is held on the first, is no new press.
    if (m_press)
        return;

    const auto &[reference, registration] = *found;
    const bool isSynthetic = std::ranges::count(m_keyboards->syntheticKeyboards(), device) > 0;
    m_press = Press{reference, registration.identifier, device, keycode, isSynthetic};
    // The grab of that device ends when we type ourselves, before the release.
    if (isSynthetic)
        m_connection->addInputEvents(device, XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE);

    // The application saw the modifiers go down but not the key.
    if (registration.combination.modifiers & (ClassicMask::option | ClassicMask::command))
        breakModifierTap(*m_keymap, *m_keymap, *m_keyboards);
    if (m_pressed)
        m_pressed(&m_press->identifier);
}

void X11HotkeyRegistration::handleKeyRelease(uint16_t device, uint8_t keycode)
{
    passOnReleases();
    if (m_press && m_press->device == device && m_press->keycode == keycode)
        endPress();
}

void X11HotkeyRegistration::endPress()
{
    if (!m_press)
        return;
    const Press ended = *std::exchange(m_press, std::nullopt);
    if (ended.isSynthetic && m_connection->isAlive())
        m_connection->removeInputEvents(ended.device, XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE);
    if (m_released)
        m_released(&ended.identifier);
}

void X11HotkeyRegistration::passOnReleases()
{
    // A grabbed keyboard is cut off from the master keyboard, which keeps what was down then.
    const KeySet stuck = m_keyboards->logicallyHeld() & ~m_keyboards->heldOnAnyKeyboard();
    for (size_t keycode = 0; stuck.any() && keycode < stuck.size(); ++keycode) {
        if (stuck[keycode])
            m_keyboards->fakeKey(static_cast<uint8_t>(keycode), false);
    }
}

void X11HotkeyRegistration::letOwnKeyPass(uint8_t keycode)
{
    // While the grab of a press is active, all keys of its device come here.
    if (m_press && m_press->isSynthetic)
        xcb_input_xi_ungrab_device(m_connection->xcb(), XCB_CURRENT_TIME, m_press->device);
    forEachSyntheticGrab(keycode, &X11HotkeyRegistration::ungrabOn);
}

void X11HotkeyRegistration::regrabAfterOwnKey(uint8_t keycode)
{
    forEachSyntheticGrab(keycode, &X11HotkeyRegistration::grabOn);
}

template <typename Result>
void X11HotkeyRegistration::forEachSyntheticGrab(
    uint8_t keycode, Result (X11HotkeyRegistration::*change)(uint16_t, const Grab &))
{
    for (const auto &[reference, registration] : m_registrations) {
        if (registration.grab.keycode != keycode || registration.grab.modifierStates.empty())
            continue;
        for (const uint16_t device : m_keyboards->syntheticKeyboards())
            (void)(this->*change)(device, registration.grab);
    }
}

void X11HotkeyRegistration::handleHierarchyChange(const xcb_generic_event_t *event)
{
    const auto *change = reinterpret_cast<const xcb_input_hierarchy_event_t *>(event);
    constexpr uint32_t gone = XCB_INPUT_HIERARCHY_MASK_SLAVE_REMOVED
        | XCB_INPUT_HIERARCHY_MASK_DEVICE_DISABLED;
    constexpr uint32_t come = XCB_INPUT_HIERARCHY_MASK_DEVICE_ENABLED
        | XCB_INPUT_HIERARCHY_MASK_SLAVE_ATTACHED;

    for (auto infos = xcb_input_hierarchy_infos_iterator(change); infos.rem > 0;
         xcb_input_hierarchy_info_next(&infos)) {
        if (m_press && infos.data->deviceid == m_press->device && (infos.data->flags & gone)) {
            passOnReleases();
            endPress();
        }
    }
    if (!(change->flags & (come | gone)))
        return;
    Statuses statuses;
    for (const auto &[reference, registration] : m_registrations) {
        Status status = registration.status;
        if (status != 0) {
            // What stood against it may have gone with a keyboard.
            if (!registration.grab.modifierStates.empty())
                status = grabUnlessTaken(registration.grab);
        } else if (change->flags & come) {
            // A keyboard that refuses takes nothing from those that have the combination already.
            if (grabOnAllKeyboards(registration.grab) == XCB_ACCESS)
                status = XCB_ACCESS;
        }
        statuses.emplace_back(reference, status);
    }
    tellStatuses(statuses);
}

void X11HotkeyRegistration::handleKeymapChange()
{
    if (!m_connection->isAlive())
        return;
    Statuses statuses;
    for (auto &[reference, registration] : m_registrations) {
        const Grab grab = makeGrab(registration.combination).value_or(Grab{});
        if (grab == registration.grab && registration.status == 0)
            continue;
        if (grab != registration.grab)
            ungrabOnAllKeyboards(registration.grab);
        registration.grab = grab;
        statuses.emplace_back(
            reference, grab.modifierStates.empty() ? Status{XCB_VALUE} : grabUnlessTaken(grab));
    }
    tellStatuses(statuses);
}

void X11HotkeyRegistration::tellStatuses(const Statuses &statuses)
{
    Statuses changes;
    for (const auto &[reference, status] : statuses) {
        if (std::exchange(m_registrations.at(reference).status, status) != status)
            changes.emplace_back(reference, status);
    }
    changes.emplace_back(0, 0);
    for (const auto &[reference, status] : changes) {
        // Called by a copy and for what is still there: the handler may change everything.
        if (const StatusHandler handler = m_status;
            handler && (reference == 0 || m_registrations.contains(reference)))
            handler(reference, status);
    }
}

} // namespace Velloro
