#include "Platform/Linux/Wayland/Windows/SwayTree.h"

#include "Base/StringLiterals.h"

#include <QJsonArray>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 100ms;

/// The window with the focus in this part of the tree.
std::optional<WindowList::Window> focusedWindow(const QJsonObject &node)
{
    // Only windows have a process.
    if (node[u"focused"_s].toBool() && node.contains(u"pid"_s)) {
        // X11 windows have a class in the place of an id.
        const QJsonObject names = node[u"window_properties"_s].toObject();
        return WindowList::Window{
            .number = static_cast<uint64_t>(node[u"id"_s].toInteger()),
            .windowClass = {names[u"instance"_s].toString(),
                            node[u"app_id"_s].toString(names[u"class"_s].toString())},
            .process = static_cast<pid_t>(node[u"pid"_s].toInteger()),
        };
    }
    for (const auto &children : {u"nodes"_s, u"floating_nodes"_s}) {
        for (const QJsonValue child : node[children].toArray()) {
            if (auto found = focusedWindow(child.toObject()))
                return found;
        }
    }
    return std::nullopt;
}

} // namespace

SwayTree::SwayTree(std::unique_ptr<SwaySocket> socket)
    : m_socket(std::move(socket))
{
    connect(m_socket.get(), &SwaySocket::eventReceived, this, &SwayTree::handleEvent);
    m_socket->subscribe({u"window"_s, u"workspace"_s});
    ask();
}

bool SwayTree::isAlive() const
{
    return m_socket->isAlive();
}

std::optional<WindowList::Window> SwayTree::activeWindow()
{
    m_socket->dispatchUntil([this] { return m_questions == 0; }, QDeadlineTimer(patience));
    return isAlive() ? m_active : std::nullopt;
}

void SwayTree::handleEvent(SwaySocket::Event event, const QJsonObject &content)
{
    // Titles change with every command in a terminal.
    const bool isAboutWindows = event == SwaySocket::Event::window
        || event == SwaySocket::Event::workspace;
    if (isAboutWindows && content[u"change"_s] != u"title"_s)
        ask();
}

void SwayTree::ask()
{
    ++m_questions;
    m_socket->send(SwaySocket::Request::getTree, {}, [this](const QJsonDocument &tree) {
        --m_questions;
        m_active = focusedWindow(tree.object());
    });
}

} // namespace Velloro
