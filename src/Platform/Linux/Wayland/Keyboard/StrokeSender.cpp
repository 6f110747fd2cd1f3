#include "Platform/Linux/Wayland/Keyboard/StrokeSender.h"

#include "Platform/Linux/Wayland/Keyboard/FakeInput.h"
#include "Platform/Linux/Wayland/Keyboard/VirtualKeyboard.h"

namespace Velloro {

std::unique_ptr<StrokeSender> StrokeSender::make(WaylandConnection &connection)
{
    // The keyboard first: what the user holds is no matter to it.
    if (auto keyboard = VirtualKeyboard::make(connection))
        return keyboard;
    return FakeInput::make(connection);
}

} // namespace Velloro
