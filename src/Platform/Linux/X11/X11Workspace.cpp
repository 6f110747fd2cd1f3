#include "Platform/Linux/X11/X11Workspace.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <QList>
#include <QSysInfo>
#include <cstring>

namespace Velloro {

X11Workspace::X11Workspace(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
{
    if (m_connection)
        m_clients.emplace(m_connection);
}

std::optional<RunningApplication> X11Workspace::frontmostApplication()
{
    const xcb_window_t window = activeWindow();
    if (window == XCB_WINDOW_NONE || isOnAnotherMachine(window))
        return std::nullopt;
    // What a program in a sandbox names is its number in there, so the server is asked first.
    auto process = m_clients->process(window);
    if (!process)
        process = namedProcess(window);
    if (!process)
        return std::nullopt;
    return RunningApplication{*process,
                              isKnownToPaste(windowClass(window).value_or(WindowClass{}))};
}

std::optional<uint64_t> X11Workspace::frontmostWindow()
{
    const xcb_window_t window = activeWindow();
    return window == XCB_WINDOW_NONE ? std::nullopt : std::optional<uint64_t>(window);
}

std::optional<WindowClass> X11Workspace::activeWindowClass()
{
    const xcb_window_t window = activeWindow();
    return window == XCB_WINDOW_NONE ? std::nullopt : windowClass(window);
}

std::optional<WindowClass> X11Workspace::windowClass(xcb_window_t window)
{
    const QList<QByteArray> names
        = property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING).split('\0');
    if (names.size() < 2)
        return std::nullopt;
    return WindowClass{QString::fromLatin1(names[0]), QString::fromLatin1(names[1])};
}

bool X11Workspace::answersPings(xcb_window_t window)
{
    const QByteArray protocols
        = property(window, m_connection->atom("WM_PROTOCOLS"), XCB_ATOM_ATOM);
    const xcb_atom_t ping = m_connection->atom("_NET_WM_PING");
    for (qsizetype at = 0; at + qsizetype(sizeof ping) <= protocols.size(); at += sizeof ping) {
        if (std::memcmp(protocols.constData() + at, &ping, sizeof ping) == 0)
            return true;
    }
    return false;
}

QByteArray X11Workspace::property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type)
{
    constexpr uint32_t longest = 256; // in units of four bytes
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection->xcb(),
        xcb_get_property(m_connection->xcb(), 0, window, name, type, 0, longest), nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE)
        return {};
    return QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

xcb_window_t X11Workspace::activeWindow()
{
    if (!m_connection || !m_connection->isAlive())
        return XCB_WINDOW_NONE;
    const QByteArray active
        = property(m_connection->root(), m_connection->atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW);
    if (active.size() < static_cast<qsizetype>(sizeof(xcb_window_t)))
        return focusedWindow();
    xcb_window_t window = XCB_WINDOW_NONE;
    std::memcpy(&window, active.constData(), sizeof window);
    return window;
}

xcb_window_t X11Workspace::focusedWindow()
{
    xcb_connection_t *xcb = m_connection->xcb();
    const XcbReply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    if (!focus)
        return XCB_WINDOW_NONE;

    xcb_window_t window = focus->focus;
    if (window == XCB_INPUT_FOCUS_POINTER_ROOT || window == m_connection->root()) {
        const XcbReply<xcb_query_pointer_reply_t> pointer(
            xcb_query_pointer_reply(xcb, xcb_query_pointer(xcb, m_connection->root()), nullptr));
        return pointer ? pointer->child : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
    }
    // The focus is often on a window within the one that has a class.
    while (window != XCB_WINDOW_NONE && window != m_connection->root()) {
        if (!property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING).isEmpty())
            return window;
        const XcbReply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(xcb, xcb_query_tree(xcb, window), nullptr));
        if (!tree || tree->parent == m_connection->root())
            return window;
        window = tree->parent;
    }
    return XCB_WINDOW_NONE;
}

std::optional<pid_t> X11Workspace::namedProcess(xcb_window_t window)
{
    const QByteArray named = property(window, m_connection->atom("_NET_WM_PID"), XCB_ATOM_CARDINAL);
    uint32_t process = 0;
    if (named.size() < static_cast<qsizetype>(sizeof process))
        return std::nullopt;
    std::memcpy(&process, named.constData(), sizeof process);
    return process == 0 ? std::nullopt : std::optional<pid_t>(process);
}

bool X11Workspace::isOnAnotherMachine(xcb_window_t window)
{
    const QString machine = QString::fromLocal8Bit(
        property(window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_GET_PROPERTY_TYPE_ANY));
    if (machine.isEmpty() || machine == u"localhost")
        return false;
    // Either may be given with its domain.
    const QString here = QSysInfo::machineHostName();
    return machine.section(u'.', 0, 0).compare(here.section(u'.', 0, 0), Qt::CaseInsensitive) != 0;
}

} // namespace Velloro
