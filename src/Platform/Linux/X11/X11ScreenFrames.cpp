#include "Platform/Linux/X11/X11ScreenFrames.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <QCursor>
#include <QGuiApplication>
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace Velloro {

namespace {

constexpr uint32_t maximumWindows = 4096;
/// Widths at the left, right, top and bottom edge of the desktop, then where along the edge each of
/// them begins and ends.
using Strut = std::array<int, 12>;

void addReservations(const Strut &strut, const QSize &desktop, std::vector<QRect> &panels)
{
    const auto [left, right, top, bottom, leftStart, leftEnd, rightStart, rightEnd, topStart,
                topEnd, bottomStart, bottomEnd]
        = strut;
    if (left > 0)
        panels.emplace_back(QPoint(0, leftStart), QPoint(left - 1, leftEnd));
    if (right > 0)
        panels.emplace_back(QPoint(desktop.width() - right, rightStart),
                            QPoint(desktop.width() - 1, rightEnd));
    if (top > 0)
        panels.emplace_back(QPoint(topStart, 0), QPoint(topEnd, top - 1));
    if (bottom > 0)
        panels.emplace_back(QPoint(bottomStart, desktop.height() - bottom),
                            QPoint(bottomEnd, desktop.height() - 1));
}

} // namespace

X11ScreenFrames::X11ScreenFrames(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
{
}

std::optional<QRect> X11ScreenFrames::visibleFrame(const QRect &screen, double pixelRatio) const
{
    if (!m_connection || !m_connection->isAlive() || QGuiApplication::screens().size() < 2)
        return std::nullopt;
    // A screen's origin is the server's; its size is scaled.
    const QRect monitor(screen.topLeft(),
                        QSize(int(std::lround(screen.width() * pixelRatio)),
                              int(std::lround(screen.height() * pixelRatio))));
    const QRect visible = withoutPanels(monitor, panels());
    const auto scaled = [&](int pixels) { return int(std::ceil(pixels / pixelRatio)); };
    return screen.adjusted(
        scaled(visible.left() - monitor.left()), scaled(visible.top() - monitor.top()),
        -scaled(monitor.right() - visible.right()), -scaled(monitor.bottom() - visible.bottom()));
}

QRect X11ScreenFrames::withoutPanels(const QRect &monitor, std::span<const QRect> panels)
{
    QRect visible = monitor;
    for (const QRect &panel : panels) {
        const QRect part = panel & monitor;
        if (part.isEmpty() || part == monitor)
            continue;
        // A panel lies along the edge that it covers more of.
        QRect rest = visible;
        if (part.width() >= part.height()) {
            if (part.top() == monitor.top())
                rest.setTop(std::max(rest.top(), part.bottom() + 1));
            else
                rest.setBottom(std::min(rest.bottom(), part.top() - 1));
        } else if (part.left() == monitor.left()) {
            rest.setLeft(std::max(rest.left(), part.right() + 1));
        } else {
            rest.setRight(std::min(rest.right(), part.left() - 1));
        }
        if (!rest.isEmpty())
            visible = rest;
    }
    return visible;
}

std::optional<QPointF> X11ScreenFrames::pointer() const
{
    return QCursor::pos();
}

std::vector<QRect> X11ScreenFrames::panels() const
{
    xcb_connection_t *xcb = m_connection->xcb();
    const auto extent = xcb_get_geometry(xcb, m_connection->root());
    const auto list = xcb_get_property(xcb, 0, m_connection->root(),
                                       m_connection->atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW, 0,
                                       maximumWindows);
    const XcbReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(xcb, extent, nullptr));
    const XcbReply<xcb_get_property_reply_t> clients(xcb_get_property_reply(xcb, list, nullptr));
    if (!geometry || !clients || clients->format != 32)
        return {};
    const QSize desktop(geometry->width, geometry->height);
    const std::span windows(
        static_cast<const xcb_window_t *>(xcb_get_property_value(clients.get())),
        clients->value_len);

    // All questions first, so that the server is waited for once.
    const xcb_atom_t partial = m_connection->atom("_NET_WM_STRUT_PARTIAL");
    const xcb_atom_t whole = m_connection->atom("_NET_WM_STRUT");
    std::vector<xcb_get_property_cookie_t> cookies;
    for (const xcb_window_t window : windows) {
        for (const xcb_atom_t name : {partial, whole})
            cookies.push_back(xcb_get_property(xcb, 0, window, name, XCB_ATOM_CARDINAL, 0,
                                               uint32_t(std::tuple_size_v<Strut>)));
    }
    std::vector<QRect> panels;
    bool hasPartial = false;
    for (size_t index = 0; index < cookies.size(); ++index) {
        const bool isPartial = index % 2 == 0;
        const XcbReply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(xcb, cookies[index], nullptr));
        const bool isUsable = reply && reply->format == 32
            && reply->value_len >= (isPartial ? std::tuple_size_v<Strut> : 4);
        // The one with the extents is the more exact of the two.
        if (isPartial)
            hasPartial = isUsable;
        if (!isUsable || (!isPartial && hasPartial))
            continue;
        Strut strut{0, 0,
                    0, 0,
                    0, desktop.height() - 1,
                    0, desktop.height() - 1,
                    0, desktop.width() - 1,
                    0, desktop.width() - 1};
        const auto *values = static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
        std::transform(values, values + (isPartial ? strut.size() : 4), strut.begin(),
                       [](uint32_t value) { return int(std::min(value, 0xffffu)); });
        addReservations(strut, desktop, panels);
    }
    return panels;
}

} // namespace Velloro
