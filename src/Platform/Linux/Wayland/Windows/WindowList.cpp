#include "Platform/Linux/Wayland/Windows/WindowList.h"

#include "Platform/Linux/Wayland/Windows/ForeignToplevels.h"
#include "Platform/Linux/Wayland/Windows/PlasmaWindows.h"
#include "Platform/Linux/Wayland/Windows/SwayTree.h"

#include <QGuiApplication>
#include <unistd.h>

namespace Velloro {

bool WindowList::Window::isOwn() const
{
    if (process)
        return *process == getpid();
    return !windowClass.name.isEmpty() && windowClass.name == QGuiApplication::desktopFileName();
}

std::shared_ptr<WindowList> WindowList::make(const std::shared_ptr<WaylandConnection> &connection)
{
    // The last one knows of no processes.
    if (auto socket = SwaySocket::open())
        return std::make_shared<SwayTree>(std::move(socket));
    if (auto windows = PlasmaWindows::make(connection))
        return windows;
    return ForeignToplevels::make(connection);
}

} // namespace Velloro
