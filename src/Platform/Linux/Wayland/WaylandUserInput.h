#pragma once

#include "Platform/UserInput.h"

namespace Velloro {

/// A compositor tells no program what is pressed over the windows of others, and an X server beside
/// it only what is pressed over its own.
class WaylandUserInput final : public UserInput
{
public:
    void follow() override {}
    void unfollow() override {}
    [[nodiscard]] bool isTold() const override { return false; }
    [[nodiscard]] uint64_t presses() override { return 0; }
};

} // namespace Velloro
