#pragma once

#include "Base/StringLiterals.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/XcbReply.h"
#include "Support/WaitUntil.h"

#include <QStringList>
#include <functional>
#include <string>
#include <xcb/xcb_keysyms.h>
#include <xkbcommon/xkbcommon.h>

namespace Velloro {

/// Another program's window with the keyboard focus, which writes down the keys that reach it:
/// "+Alt_L", "+a with Alt", "-a". The symbol is that of the first layout, without modifiers; a key
/// without one is "none". A ping is "ping".
class KeyWindow : public QObject
{
public:
    explicit KeyWindow(const QByteArray &windowClass = QByteArray("editor\0Editor\0", 14))
        : m_connection(X11Connection::open())
        , m_symbols(xcb_key_symbols_alloc(m_connection->xcb()))
    {
        xcb_connection_t *xcb = m_connection->xcb();
        m_window = xcb_generate_id(xcb);
        const uint32_t events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE
            | XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_create_window(xcb, XCB_COPY_FROM_PARENT, m_window, m_connection->root(), 0, 0, 200, 100,
                          0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                          &events);
        setClass(windowClass);
        connect(m_connection.get(), &X11Connection::eventReceived, this, &KeyWindow::handleEvent);
        xcb_map_window(xcb, m_window);
        m_connection->flush();
        // A window manager that has just started may overlook the window, or leave it without the
        // focus.
        QDeadlineTimer showAgain(500);
        isReady = waitUntil([&] {
            if (showAgain.hasExpired()) {
                xcb_map_window(xcb, m_window);
                showAgain.setRemainingTime(500);
            }
            xcb_set_input_focus(m_connection->xcb(), XCB_INPUT_FOCUS_PARENT, m_window,
                                XCB_CURRENT_TIME);
            m_connection->flush();
            return m_hasFocus;
        });
    }
    ~KeyWindow() override
    {
        xcb_key_symbols_free(m_symbols);
        xcb_destroy_window(m_connection->xcb(), m_window);
        m_connection->flush();
    }

    /// Both names, each ended by a zero.
    void setClass(const QByteArray &windowClass)
    {
        xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_CLASS,
                            XCB_ATOM_STRING, 8, static_cast<uint32_t>(windowClass.size()),
                            windowClass.constData());
        sync();
    }

    /// The keys since the last call, separated by ", ". Waits until those that the server has sent
    /// are here.
    std::string take()
    {
        sync();
        // The layout may be another one by now.
        xcb_key_symbols_free(std::exchange(m_symbols, xcb_key_symbols_alloc(m_connection->xcb())));
        m_connection->dispatchPending();
        return std::exchange(m_keys, {}).join(u", "_s).toStdString();
    }
    /// Whether the server holds any key down for the applications.
    bool isAnyKeyDown()
    {
        const XcbReply<xcb_query_keymap_reply_t> keys(xcb_query_keymap_reply(
            m_connection->xcb(), xcb_query_keymap(m_connection->xcb()), nullptr));
        return std::any_of(std::begin(keys->keys), std::end(keys->keys),
                           [](uint8_t bits) { return bits != 0; });
    }
    void sync()
    {
        XcbReply<xcb_get_input_focus_reply_t>(xcb_get_input_focus_reply(
            m_connection->xcb(), xcb_get_input_focus(m_connection->xcb()), nullptr));
    }

    /// Says that the window answers pings.
    void promiseAnswersToPings()
    {
        const xcb_atom_t ping = m_connection->atom("_NET_WM_PING");
        xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, m_window,
                            m_connection->atom("WM_PROTOCOLS"), XCB_ATOM_ATOM, 32, 1, &ping);
        sync();
    }
    /// Says that its program, which is this one, runs on another machine.
    void pretendToBeElsewhere()
    {
        xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, m_window,
                            XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, 8, 9, "elsewhere");
        sync();
    }
    /// Answers a ping by sending it on to the root window.
    void answer(xcb_client_message_event_t ping)
    {
        ping.window = m_connection->root();
        xcb_send_event(m_connection->xcb(), 0, m_connection->root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char *>(&ping));
        m_connection->flush();
    }

    [[nodiscard]] xcb_window_t window() const { return m_window; }

    /// Called with each ping.
    std::function<void(const xcb_client_message_event_t &)> pinged;

    bool isReady = false;

private:
    void handleEvent(const xcb_generic_event_t *event)
    {
        const uint8_t type = event->response_type & 0x7f;
        if (type == XCB_FOCUS_IN)
            m_hasFocus = true;
        if (const auto *ping = reinterpret_cast<const xcb_client_message_event_t *>(event);
            type == XCB_CLIENT_MESSAGE && ping->window == m_window
            && ping->data.data32[0] == m_connection->atom("_NET_WM_PING")) {
            m_keys << u"ping"_s;
            if (pinged)
                pinged(*ping);
        }
        if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE)
            return;
        const auto *key = reinterpret_cast<const xcb_key_press_event_t *>(event);
        char name[64] = "none";
        if (const xcb_keysym_t symbol = xcb_key_symbols_get_keysym(m_symbols, key->detail, 0))
            xkb_keysym_get_name(symbol, name, sizeof name);
        QString text = (type == XCB_KEY_PRESS ? u'+' : u'-') + QString::fromLatin1(name);
        if (type == XCB_KEY_PRESS) {
            QStringList with;
            constexpr std::pair<uint16_t, const char *> modifiers[]
                = {{XCB_MOD_MASK_SHIFT, "Shift"},
                   {XCB_MOD_MASK_CONTROL, "Control"},
                   {XCB_MOD_MASK_1, "Alt"},
                   {XCB_MOD_MASK_4, "Super"}};
            for (const auto &[mask, modifier] : modifiers) {
                if (key->state & mask)
                    with << QString::fromLatin1(modifier);
            }
            if (!with.isEmpty())
                text += u" with "_s + with.join(u'+');
        }
        m_keys << text;
    }

    std::shared_ptr<X11Connection> m_connection;
    xcb_key_symbols_t *m_symbols;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    bool m_hasFocus = false;
    QStringList m_keys;
};

} // namespace Velloro
