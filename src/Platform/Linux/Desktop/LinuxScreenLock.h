#pragma once

#include "Platform/Linux/Desktop/DBusLockState.h"
#include "Platform/Linux/X11/Keyboard/X11KeyboardGrab.h"
#include "Platform/Linux/X11/X11LockerWatch.h"
#include "Platform/ScreenLock.h"

#include <memory>

namespace Velloro {

/// The lock of a Linux desktop, as the buses tell of it; who has the keyboard, the X server knows.
/// Of a locker that tells nobody `locked` is emitted, too, and then the keyboard is taken.
class LinuxScreenLock final : public ScreenLock
{
    Q_OBJECT

public:
    /// `lockState` has what the buses report, if there are any; without a connection the keyboard
    /// is free.
    LinuxScreenLock(std::unique_ptr<DBusLockState> lockState,
                    const std::shared_ptr<X11Connection> &connection);

    [[nodiscard]] bool isLocked() const override { return m_lockState->isLocked(); }
    [[nodiscard]] bool isKeyboardTaken() override;

private:
    std::unique_ptr<DBusLockState> m_lockState;
    std::unique_ptr<X11KeyboardGrab> m_keyboardGrab;
    std::unique_ptr<X11LockerWatch> m_lockerWatch;
};

} // namespace Velloro
