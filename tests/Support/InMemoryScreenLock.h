#pragma once

#include "Platform/ScreenLock.h"

namespace Velloro {

/// A screen that the test locks.
class InMemoryScreenLock : public ScreenLock
{
public:
    bool isScreenLocked = false;
    bool isTaken = false;

    void lock()
    {
        isScreenLocked = true;
        Q_EMIT locked();
    }

    bool isLocked() const override { return isScreenLocked; }
    bool isKeyboardTaken() override { return isTaken; }
};

} // namespace Velloro
