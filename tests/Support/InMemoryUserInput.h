#pragma once

#include "Platform/UserInput.h"

namespace Velloro {

/// A user who presses what the test says.
class InMemoryUserInput : public UserInput
{
public:
    /// While it is followed.
    void press() { m_presses += m_isFollowed; }

    bool tells = true;

    void follow() override { m_isFollowed = true; }
    void unfollow() override { m_isFollowed = false; }
    [[nodiscard]] bool isTold() const override { return tells; }
    [[nodiscard]] uint64_t presses() override { return m_presses; }

private:
    uint64_t m_presses = 0;
    bool m_isFollowed = false;
};

} // namespace Velloro
