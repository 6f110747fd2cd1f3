#pragma once

#include <cstdint>

namespace Velloro {

/// What the user does with keyboards and pointers, in whichever application. Main thread only.
class UserInput
{
public:
    virtual ~UserInput() = default;

    /// Counts presses from now on, until `unfollow`. Until it is needed nobody is told of them.
    virtual void follow() = 0;
    virtual void unfollow() = 0;
    /// Whether the system tells what the user presses. Where it does not, `presses` is always 0,
    /// and says nothing.
    [[nodiscard]] virtual bool isTold() const = 0;
    /// How many keys and buttons the user has pressed while that was followed: two answers tell
    /// whether he has pressed any in between. The hotkey does not count, nor do modifiers, which do
    /// nothing by themselves, nor what this program presses.
    [[nodiscard]] virtual uint64_t presses() = 0;
};

} // namespace Velloro
