#pragma once

#include "Platform/Linux/Desktop/DesktopLook.h"
#include "Platform/Linux/X11/X11Connection.h"

#include <QByteArray>
#include <memory>
#include <optional>

namespace Velloro {

/// What the X server's screen tells of the desktop's look: whether a compositing manager runs,
/// whether there is a tray, and its colours. It follows them. Main thread only.
class X11DesktopLook : public DesktopLook
{
    Q_OBJECT

public:
    /// Takes a connection of its own, on which no one else asks for the root window's events. Null
    /// where there is no X server.
    explicit X11DesktopLook(std::shared_ptr<X11Connection> connection, QObject *parent = nullptr);

    [[nodiscard]] bool isCompositing() const override { return m_isCompositing; }
    [[nodiscard]] bool scalesWindowsWithText() const override { return true; }
    [[nodiscard]] bool hasTray() const override { return m_hasTray; }
    [[nodiscard]] std::optional<bool> isTrayDark() const override { return m_isTrayDark; }

private:
    void eventReceived(const xcb_generic_event_t *event);
    void watchManagers();
    void update();
    [[nodiscard]] xcb_window_t owner(const QByteArray &selection);
    [[nodiscard]] std::optional<bool> readTrayColors(xcb_window_t tray);

    std::shared_ptr<X11Connection> m_connection;
    int m_screen = 0;
    /// The selections that the two managers own.
    QByteArray m_compositor;
    QByteArray m_tray;
    /// The event of a selection's change of owner; nothing where the server has none.
    std::optional<int> m_ownerEvent;
    bool m_isCompositing = false;
    bool m_hasTray = false;
    std::optional<bool> m_isTrayDark;
};

} // namespace Velloro
