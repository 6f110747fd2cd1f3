#pragma once

#include "Base/CustomDelete.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QHash>
#include <QObject>
#include <QSocketNotifier>
#include <cstdint>
#include <functional>
#include <memory>
#include <xcb/xcb.h>

namespace Velloro {

/// One connection to the X server, whose events arrive as a signal on the thread that opened it.
///
/// When the server goes away, `ended` is emitted once; every later request is without effect and
/// every reply is absent.
class X11Connection final : public QObject
{
    Q_OBJECT

public:
    /// Connects to the display, the one of the environment when `displayName` is empty. Null when
    /// there is no X server.
    [[nodiscard]] static std::shared_ptr<X11Connection> open(const QByteArray &displayName = {});
    ~X11Connection() override;

    [[nodiscard]] xcb_connection_t *xcb() const { return m_xcb.get(); }
    [[nodiscard]] xcb_window_t root() const { return m_root; }
    [[nodiscard]] bool isAlive() const { return !m_ended && !xcb_connection_has_error(xcb()); }

    /// Major opcode of XInput 2.2 or later, which its events carry; 0 where the server lacks it.
    [[nodiscard]] uint8_t inputOpcode() const { return m_inputOpcode; }
    /// Whether synthetic key strokes can be sent.
    [[nodiscard]] bool hasXTest() const { return m_hasXTest; }
    /// Code of the XKB extension's events; 0 where the server lacks it.
    [[nodiscard]] uint8_t keyboardEventBase() const { return m_keyboardEventBase; }

    /// The atom with this name.
    [[nodiscard]] xcb_atom_t atom(const QByteArray &name);

    /// Sends what is buffered.
    void flush() { xcb_flush(xcb()); }
    /// Hands every event that has arrived to the signal's receivers; waits for nothing.
    void dispatchPending();
    /// Dispatches events until `done` says so; false when the deadline came first.
    bool dispatchUntil(const std::function<bool()> &done, const QDeadlineTimer &deadline);

    /// Asks for these events of an input device, in addition to those asked for before.
    void addInputEvents(uint16_t device, uint32_t mask);
    /// Asks for them no longer.
    void removeInputEvents(uint16_t device, uint32_t mask);
    /// Asks for the events of the XKB extension that tell of a new keymap on a device.
    void addKeymapEvents(uint16_t device);

Q_SIGNALS:
    /// An event, an error included; valid during the call only.
    void eventReceived(const xcb_generic_event_t *event);
    void ended();
    /// This program is about to press a key of its own, or has just released it.
    void syntheticKeyComing(uint8_t keycode);
    void syntheticKeyGone(uint8_t keycode);
    /// A press of this key went to a hotkey, and to no application.
    void hotkeyTaken(uint8_t keycode);

private:
    explicit X11Connection(xcb_connection_t *connection, int screen);

    void selectInputEvents(uint16_t device, uint32_t mask);

    std::unique_ptr<xcb_connection_t, CustomDelete<xcb_disconnect>> m_xcb;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    uint8_t m_inputOpcode = 0;
    bool m_hasXTest = false;
    uint8_t m_keyboardEventBase = 0;
    bool m_ended = false;
    QHash<QByteArray, xcb_atom_t> m_atoms;
    QHash<uint16_t, uint32_t> m_inputEvents;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace Velloro
