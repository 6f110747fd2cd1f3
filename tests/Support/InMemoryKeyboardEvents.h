#pragma once

#include "Platform/KeyboardEvents.h"

#include <functional>
#include <vector>

namespace Velloro {

/// Key strokes that are written down, and reach nobody but the receiver that the test names.
class InMemoryKeyboardEvents : public KeyboardEvents
{
public:
    struct Event
    {
        uint32_t keyCode = 0;
        bool keyDown = false;
        uint64_t flags = 0;

        friend bool operator==(const Event &, const Event &) = default;
    };

    std::vector<Event> posted;
    /// How long it would have waited altogether.
    std::chrono::microseconds paused{0};
    /// Events can't be created.
    bool refuses = false;
    /// The application that has the focus.
    std::function<void(const Event &)> receiver;

    bool post(uint32_t keyCode, bool keyDown, uint64_t flags) override
    {
        if (refuses)
            return false;
        posted.push_back({keyCode, keyDown, flags});
        if (receiver)
            receiver(posted.back());
        return true;
    }
    void pause(std::chrono::microseconds duration) override { paused += duration; }
};

} // namespace Velloro
