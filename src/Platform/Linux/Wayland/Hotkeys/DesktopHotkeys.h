#pragma once

#include "Platform/HotkeyRegistration.h"

#include <QObject>
#include <functional>
#include <memory>

namespace Velloro {

/// One way in which desktops let a program have a hotkey, asked for by `HotkeyRoute`. It has one
/// combination at a time. The desktop is never waited for, except at the end.
class DesktopHotkeys : public QObject
{
    Q_OBJECT

public:
    using Status = HotkeyRegistration::Status;

    /// Finds out whether this desktop offers the way. `done` is called once, at once or later.
    virtual void look(std::function<void(bool isOffered)> done) = 0;

    /// Asks for the combination, in place of the one before. `statusChanged` tells the outcome,
    /// later, and what changes of it.
    virtual void bind(KeyCombination combination) = 0;
    /// Gives the combination back, and whatever the user has it for otherwise is in force again.
    virtual void unbind() = 0;

    /// While what is returned exists, the windows are given the desktop's own combinations. Null
    /// where that is not to be had.
    [[nodiscard]] virtual std::shared_ptr<void> letShortcutsThrough() { return nullptr; }

Q_SIGNALS:
    /// One for each physical press.
    void pressed();
    void released();
    /// The combination is in force with 0; otherwise the reason, one of `HotkeyStatus`.
    void statusChanged(Velloro::DesktopHotkeys::Status status);
};

} // namespace Velloro
