#include "Platform/Linux/Desktop/LinuxScreenLock.h"

#include <utility>

namespace Velloro {

LinuxScreenLock::LinuxScreenLock(std::unique_ptr<DBusLockState> lockState,
                                 const std::shared_ptr<X11Connection> &connection)
    : m_lockState(std::move(lockState))
    , m_keyboardGrab(connection ? std::make_unique<X11KeyboardGrab>(connection) : nullptr)
    , m_lockerWatch(connection ? std::make_unique<X11LockerWatch>(connection) : nullptr)
{
    connect(m_lockState.get(), &DBusLockState::locked, this, &ScreenLock::locked);
    if (m_lockerWatch)
        connect(m_lockerWatch.get(), &X11LockerWatch::lockerAppeared, this, &ScreenLock::locked);
}

bool LinuxScreenLock::isKeyboardTaken()
{
    return m_keyboardGrab && m_keyboardGrab->isHeldByAnother();
}

} // namespace Velloro
