#include "Platform/Linux/DisplayServer.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Wayland/WaylandConnection.h"

#include <QDir>
#include <QLibraryInfo>
#include <layer-shell-client.h>

namespace Velloro {

namespace {

bool hasToolkitPlugin()
{
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platforms"_s);
    return !plugins.entryList({u"libqwayland*.so"_s}).isEmpty();
}

} // namespace

DisplayServer chooseDisplayServer()
{
    constexpr const char *toolkitPlatform = "QT_QPA_PLATFORM";
    const auto connection = WaylandConnection::open();
    if (!connection) {
        // One that hangs or is gone would keep the toolkit waiting.
        if (!qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty(toolkitPlatform))
            qputenv(toolkitPlatform, "xcb");
        return DisplayServer::x11;
    }
    // Without the layers, only windows of the X server beside the compositor have their place.
    const bool isNative = hasToolkitPlugin()
        && (connection->offers(zwlr_layer_shell_v1_interface)
            || qEnvironmentVariableIsEmpty("DISPLAY"));
    if (qEnvironmentVariableIsEmpty(toolkitPlatform))
        qputenv(toolkitPlatform, isNative ? "wayland" : "xcb");
    return DisplayServer::wayland;
}

} // namespace Velloro
