#include "Platform/Linux/Accessibility/AtSpiTimeAllowance.h"

#include <QTimer>
#include <algorithm>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

/// Leaves the pasteboard, which is used where this does not suffice, its time below half a second.
constexpr std::chrono::milliseconds allowance = 250ms;

} // namespace

std::chrono::milliseconds AtSpiTimeAllowance::remaining() const
{
    return std::max<std::chrono::milliseconds>(allowance - m_spent, 0ms);
}

void AtSpiTimeAllowance::spend(std::chrono::milliseconds elapsed)
{
    m_spent += elapsed;
    if (m_turnIsOpen)
        return;
    m_turnIsOpen = true;
    QTimer::singleShot(0, this, [this] {
        m_turnIsOpen = false;
        m_spent = 0ms;
        ++m_turn;
    });
}

} // namespace Velloro
