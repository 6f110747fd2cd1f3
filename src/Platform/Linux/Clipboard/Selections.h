#pragma once

#include "Platform/Linux/PasteCoordinator.h"

#include <QString>

namespace Velloro {

/// The clipboard of a display system, and its primary selection where a paste needs that one:
/// borrowing them for pastes, serving their content to other programs and knowing that it was read.
/// Lives on one thread.
class Selections
{
public:
    virtual ~Selections() = default;

    /// Puts the text on the clipboard for good.
    virtual void setString(const QString &text) = 0;

    /// A paste may come: reads what other programs have in both selections, and follows it as it
    /// changes, until `unfollow`.
    virtual void follow() = 0;
    virtual void unfollow() = 0;
    /// Puts the text on the clipboard for a paste, and waits until those who watch the clipboard
    /// have noticed.
    virtual void borrow(const QString &text) = 0;
    /// Makes the primary selection hold what the clipboard holds, until `giveBack`.
    virtual void lendToPrimarySelection() = 0;
    /// Puts back what was there, when a paste that is under way has been served.
    virtual void giveBack() = 0;

    /// The application of the target is about to paste the borrowed text.
    ///
    /// What another program has taken for something else since it was borrowed is borrowed once
    /// more. False where it has been taken again by then: the application would paste that.
    [[nodiscard]] virtual bool beginPaste(const PasteTarget &target) = 0;
    /// Waits until that application has been given the text, for a second at most. Whether it was
    /// given it; the last paste's answer stays until the next `borrow`.
    virtual bool awaitPaste() = 0;
};

} // namespace Velloro
