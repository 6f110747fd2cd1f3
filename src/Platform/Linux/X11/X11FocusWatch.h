#pragma once

#include "Platform/Linux/X11/X11Connection.h"

#include <QObject>
#include <memory>

namespace Velloro {

/// Tells when the focus leaves all windows of an X server, as it does beside a Wayland compositor.
/// On a connection of its own, because others forget the root window's events on theirs.
class X11FocusWatch final : public QObject
{
    Q_OBJECT

public:
    X11FocusWatch();
    ~X11FocusWatch() override;

Q_SIGNALS:
    void left();

private:
    void handleEvent(const xcb_generic_event_t *event);
    [[nodiscard]] bool isOnWindow() const;

    std::shared_ptr<X11Connection> m_connection;
    xcb_atom_t m_activeWindow = XCB_ATOM_NONE;
};

} // namespace Velloro
