#pragma once

#include <QString>

namespace Velloro {

/// The general pasteboard. It is the user's: a paste borrows it and gives back what was there, in
/// every form that its owner offers. Main thread only; other programs are waited for for a bounded
/// time.
class Pasteboard
{
public:
    virtual ~Pasteboard() = default;

    /// Puts `text` there as the user's own content, for good.
    virtual void setString(const QString &text) = 0;

    /// A paste may come: begins to read what is there, and follows it as the user copies something
    /// else, until `unfollow`. Returns at once.
    virtual void follow() = 0;
    virtual void unfollow() = 0;
    /// Puts `text` there until `giveBack`. On return, who watches the pasteboard has noticed: a
    /// paste stroke may follow. Borrowing once more keeps what was there before the first time.
    virtual void borrow(const QString &text) = 0;
    /// Whether the last paste stroke was not sent: another program had taken the pasteboard from
    /// the borrowed text, and took it again at once when the text was put back. `borrow` forgets
    /// that.
    [[nodiscard]] virtual bool wasPasteRefused() const = 0;
    /// Puts back what was there, once the application that was given the last paste stroke has
    /// fetched the text, or within a second. Nothing is put back over what another program has put
    /// there meanwhile, and the text stays where nothing was there before, or it could not be read.
    virtual void giveBack() = 0;
    /// Waits, for a second at most after the last paste stroke, until the application that it was
    /// given to has fetched the text; whether it has.
    [[nodiscard]] virtual bool awaitPaste() = 0;
};

} // namespace Velloro
