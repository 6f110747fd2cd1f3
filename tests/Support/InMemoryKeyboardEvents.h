#pragma once

#include "Platform/KeyboardEvents.h"

#include <vector>

namespace Velloro {

/// Key strokes that are written down and reach nobody.
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

    bool post(uint32_t keyCode, bool keyDown, uint64_t flags) override
    {
        if (!refuses)
            posted.push_back({keyCode, keyDown, flags});
        return !refuses;
    }
    void pause(std::chrono::microseconds duration) override { paused += duration; }
};

} // namespace Velloro
