#include "Platform/Linux/HeldKey.h"

#include <utility>

namespace Velloro {

HeldKey::HeldKey(std::chrono::milliseconds repetition)
    : m_repetition(repetition)
{
}

HeldKey::Press HeldKey::press()
{
    const bool isRepeated = !m_repetitionEnd.hasExpired();
    m_repetitionEnd.setRemainingTime(m_repetition);
    if (!std::exchange(m_isHeld, true))
        return Press::first;
    return isRepeated ? Press::repeated : Press::afterLostRelease;
}

bool HeldKey::release()
{
    return std::exchange(m_isHeld, false);
}

} // namespace Velloro
