#include "Platform/Linux/Wayland/Clipboard/WaylandPasteboard.h"

#include "Platform/Linux/Wayland/Clipboard/WaylandSelections.h"

#include <chrono>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

// The program's start waits for it; another connection has been answered already.
constexpr auto patience = 500ms;

} // namespace

WaylandPasteboard::WaylandPasteboard(std::shared_ptr<PasteCoordinator> pasting,
                                     const QByteArray &socket)
    : ThreadedPasteboard(std::move(pasting), [&]() -> std::unique_ptr<Selections> {
        return WaylandSelections::make(WaylandConnection::open(QDeadlineTimer(patience), socket));
    })
{
}

} // namespace Velloro
