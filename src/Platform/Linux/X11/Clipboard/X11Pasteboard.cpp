#include "Platform/Linux/X11/Clipboard/X11Pasteboard.h"

#include "Platform/Linux/X11/Clipboard/X11Selections.h"

namespace Velloro {

X11Pasteboard::X11Pasteboard(std::shared_ptr<PasteCoordinator> pasting,
                             const QByteArray &displayName)
    : ThreadedPasteboard(std::move(pasting), [&]() -> std::unique_ptr<Selections> {
        auto connection = X11Connection::open(displayName);
        return connection ? std::make_unique<X11Selections>(std::move(connection)) : nullptr;
    })
{
}

} // namespace Velloro
