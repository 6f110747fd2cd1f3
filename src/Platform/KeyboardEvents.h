#pragma once

#include "Platform/ModifierKeys.h"

#include <chrono>
#include <cstdint>

namespace Velloro {

/// Synthetic key strokes into the window that has the keyboard focus. Main thread only.
class KeyboardEvents
{
public:
    /// Event flag of the Command modifier.
    static constexpr uint64_t commandFlag = EventFlag::command;

    virtual ~KeyboardEvents() = default;

    /// Posts one key-down or key-up event of a virtual key code (9 is V, 51 is Delete, that is
    /// backspace) with exactly the given flags, whatever modifiers the user holds.
    ///
    /// Command with V is the paste stroke: the platform sends what pastes in the focused
    /// application, but only while the pasteboard holds what it was borrowed for. Returns false
    /// when the event could not be created, or is not to be sent; nothing is sent then.
    virtual bool post(uint32_t keyCode, bool keyDown, uint64_t flags) = 0;

    /// Blocks the calling thread: the pacing between successive strokes.
    virtual void pause(std::chrono::microseconds duration) = 0;
};

} // namespace Velloro
