#pragma once

#include "Platform/Workspace.h"

namespace Velloro {

/// A desktop on which the test says what is in front.
class InMemoryWorkspace : public Workspace
{
public:
    std::optional<RunningApplication> frontmost;

    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() override
    {
        return frontmost;
    }
};

} // namespace Velloro
