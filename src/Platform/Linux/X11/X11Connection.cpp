#include "Platform/Linux/X11/X11Connection.h"

#include "Platform/Linux/X11/Keyboard/XcbKeyboardExtension.h"
#include "Platform/Linux/X11/XcbReply.h"

#include <QAbstractEventDispatcher>
#include <poll.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

namespace Velloro {

std::shared_ptr<X11Connection> X11Connection::open(const QByteArray &displayName)
{
    int screen = 0;
    xcb_connection_t *connection
        = xcb_connect(displayName.isEmpty() ? nullptr : displayName.constData(), &screen);
    std::shared_ptr<X11Connection> opened(new X11Connection(connection, screen));
    return opened->isAlive() ? opened : nullptr;
}

X11Connection::X11Connection(xcb_connection_t *connection, int screen)
    : m_xcb(connection)
{
    if (xcb_connection_has_error(connection))
        return;

    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screen > 0 && screens.rem > 1; --screen)
        xcb_screen_next(&screens);
    m_root = screens.data->root;

    xcb_prefetch_extension_data(connection, &xcb_input_id);
    xcb_prefetch_extension_data(connection, &xcb_test_id);
    xcb_prefetch_extension_data(connection, &xcb_xkb_id);

    if (const auto *input = xcb_get_extension_data(connection, &xcb_input_id);
        input && input->present) {
        const XcbReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
            connection, xcb_input_xi_query_version(connection, 2, 2), nullptr));
        if (version && version->major_version >= 2)
            m_inputOpcode = input->major_opcode;
    }
    const auto *test = xcb_get_extension_data(connection, &xcb_test_id);
    m_hasXTest = test && test->present;
    if (const auto *xkb = xcb_get_extension_data(connection, &xcb_xkb_id); xkb && xkb->present) {
        const XcbReply<xcb_xkb_use_extension_reply_t> used(xcb_xkb_use_extension_reply(
            connection, xcb_xkb_use_extension(connection, 1, 0), nullptr));
        if (used && used->supported)
            m_keyboardEventBase = xkb->first_event;
    }

    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection),
                                                   QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11Connection::dispatchPending);
    // Waiting for a reply may have read events, too; the socket then has nothing more to say.
    if (auto *dispatcher = QAbstractEventDispatcher::instance()) {
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this,
                &X11Connection::dispatchPending);
        connect(dispatcher, &QAbstractEventDispatcher::awake, this,
                &X11Connection::dispatchPending);
    }
    xcb_flush(connection);
}

X11Connection::~X11Connection() = default;

xcb_atom_t X11Connection::atom(const QByteArray &name)
{
    if (const auto known = m_atoms.constFind(name); known != m_atoms.constEnd())
        return *known;
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        xcb(), xcb_intern_atom(xcb(), 0, static_cast<uint16_t>(name.size()), name.constData()),
        nullptr));
    if (!reply)
        return XCB_ATOM_NONE;
    m_atoms.insert(name, reply->atom);
    return reply->atom;
}

void X11Connection::dispatchPending()
{
    if (m_ended)
        return;
    // Sending may read events, too: what the receivers have to send goes before the last look.
    for (bool isDrained = false; !isDrained;) {
        flush();
        isDrained = true;
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(xcb())}) {
            isDrained = false;
            Q_EMIT eventReceived(event.get());
        }
    }
    if (!m_ended && xcb_connection_has_error(xcb())) {
        m_ended = true;
        m_notifier->setEnabled(false);
        Q_EMIT ended();
    }
}

bool X11Connection::dispatchUntil(const std::function<bool()> &done, const QDeadlineTimer &deadline)
{
    for (;;) {
        dispatchPending();
        if (done())
            return true;
        if (m_ended || deadline.hasExpired())
            return false;
        pollfd waiting{xcb_get_file_descriptor(xcb()), POLLIN, 0};
        poll(&waiting, 1, static_cast<int>(deadline.remainingTime()));
    }
}

void X11Connection::addInputEvents(uint16_t device, uint32_t mask)
{
    selectInputEvents(device, m_inputEvents.value(device) | mask);
}

void X11Connection::removeInputEvents(uint16_t device, uint32_t mask)
{
    selectInputEvents(device, m_inputEvents.value(device) & ~mask);
}

void X11Connection::addKeymapEvents(uint16_t device)
{
    if (m_keyboardEventBase == 0)
        return;
    constexpr uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY
        | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr uint16_t parts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS
        | XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_VIRTUAL_MODS;
    xcb_xkb_select_events(xcb(), device, events, 0, events, parts, parts, nullptr);
    flush();
}

void X11Connection::selectInputEvents(uint16_t device, uint32_t mask)
{
    if (m_inputOpcode == 0 || m_inputEvents.value(device) == mask)
        return;
    m_inputEvents[device] = mask;
    struct
    {
        xcb_input_event_mask_t head;
        uint32_t mask;
    } request{{device, 1}, mask};
    xcb_input_xi_select_events(xcb(), m_root, 1, &request.head);
    flush();
}

} // namespace Velloro
