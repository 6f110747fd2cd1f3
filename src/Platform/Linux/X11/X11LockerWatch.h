#pragma once

#include "Platform/Linux/X11/Keyboard/X11KeyboardGrab.h"

#include <QObject>
#include <QTimer>
#include <chrono>
#include <memory>

namespace Velloro {

/// Notices a screen locker that tells nobody: a window that no window manager looks after, which
/// covers the whole screen while its program keeps the keyboard to itself. Menus and prompts are
/// smaller, and a virtual machine in full screen is the window manager's.
class X11LockerWatch final : public QObject
{
    Q_OBJECT

public:
    /// `pauseBetweenLooks` lies between the looks at what may be a locker, of which three in a row
    /// have to find the keyboard taken: what takes the screen for a moment only, as a program does
    /// that takes a picture of it, is none.
    explicit X11LockerWatch(std::shared_ptr<X11Connection> connection,
                            std::chrono::milliseconds pauseBetweenLooks
                            = std::chrono::milliseconds(400));

Q_SIGNALS:
    /// A locker has appeared.
    void lockerAppeared();

private:
    void handleEvent(const xcb_generic_event_t *event);
    void look();
    /// Whether a window is shown and no smaller than the screen.
    [[nodiscard]] bool coversScreen(xcb_window_t window) const;
    /// Whether the window is one of a window manager's: it, or one within it, has a state.
    [[nodiscard]] bool isManaged(xcb_window_t window, int depth) const;

    std::shared_ptr<X11Connection> m_connection;
    X11KeyboardGrab m_grab;
    /// The window that may turn out to be a locker's.
    xcb_window_t m_candidate = XCB_WINDOW_NONE;
    int m_looksLeft = 0;
    int m_timesTaken = 0;
    QTimer m_nextLook;
};

} // namespace Velloro
