#pragma once

#include "Platform/Workspace.h"

namespace Velloro {

/// A desktop on which the test says what is in front.
class InMemoryWorkspace : public Workspace
{
public:
    std::optional<RunningApplication> frontmost;
    std::optional<uint64_t> window;

    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() override
    {
        return frontmost;
    }
    [[nodiscard]] std::optional<uint64_t> frontmostWindow() override { return window; }
};

} // namespace Velloro
