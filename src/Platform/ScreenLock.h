#pragma once

#include <QObject>

namespace Velloro {

/// Whether what is typed reaches the user's applications, and whether the user is there at all.
/// Main thread only.
class ScreenLock : public QObject
{
    Q_OBJECT

public:
    /// Whether the screen is locked, as far as the session has reported. Sends no request.
    [[nodiscard]] virtual bool isLocked() const = 0;

    /// Whether another program has the keyboard to itself, so that keys do not go to the window
    /// that has the focus: a screen locker that tells nobody, a prompt for a password, an open
    /// menu, a virtual machine. Waits 0.1 s at most.
    [[nodiscard]] virtual bool isKeyboardTaken() = 0;

Q_SIGNALS:
    /// The screen was locked.
    void locked();
};

} // namespace Velloro
