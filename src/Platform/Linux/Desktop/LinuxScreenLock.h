#pragma once

#include "Platform/Linux/Desktop/DBusLockState.h"
#include "Platform/Linux/X11/Keyboard/X11KeyboardGrab.h"
#include "Platform/ScreenLock.h"

#include <memory>

namespace Velloro {

/// The lock of a Linux desktop, as the buses tell of it; who has the keyboard, the X server knows.
class LinuxScreenLock final : public ScreenLock
{
    Q_OBJECT

public:
    /// `lockState` has what the buses report, if there are any; without a connection the keyboard is
    /// free.
    LinuxScreenLock(std::unique_ptr<DBusLockState> lockState,
                    std::shared_ptr<X11Connection> connection);

    [[nodiscard]] bool isLocked() const override { return m_lockState->isLocked(); }
    [[nodiscard]] bool isKeyboardTaken() override;

private:
    std::unique_ptr<DBusLockState> m_lockState;
    std::unique_ptr<X11KeyboardGrab> m_keyboardGrab;
};

} // namespace Velloro
