#pragma once

#include "Platform/Linux/X11/Clipboard/BorrowedSelection.h"
#include "Platform/Linux/X11/X11Clients.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <optional>

namespace Velloro {

/// The clipboard of an X server, and its primary selection where a paste needs that one: borrowing
/// them for pastes, serving their content to other programs and knowing who has read it.
///
/// Lives on one thread. The connection must be this object's own: while another program is waited
/// for, only what concerns the selections is dealt with.
class X11Selections final : public QObject
{
    Q_OBJECT

public:
    explicit X11Selections(std::shared_ptr<X11Connection> connection);
    /// Hands what the user has on the clipboard to the clipboard manager if one runs, so that it
    /// outlives the program. What is still being read is waited for, two seconds at most.
    ~X11Selections() override;

    /// Puts the text on the clipboard for good.
    void setString(const QString &text);

    /// A paste may come: reads what other programs have in both selections, and follows it as it
    /// changes, until `unfollow`.
    void follow();
    void unfollow();
    /// Puts the text on the clipboard for a paste, and waits until those who watch the clipboard
    /// have noticed.
    void borrow(const QString &text);
    /// Makes the primary selection hold what the clipboard holds, until `giveBack`.
    void lendToPrimarySelection();
    /// Puts back what was there, when a paste that is under way has been served.
    void giveBack();

    /// The application of this window is about to paste the borrowed text. It is given that
    /// whenever it asks, although the clipboard may hold something else by then; once, and for a
    /// second at most. In Wine another process may ask for it: all windows have their clipboard
    /// from one. A window of this program's own can't fetch the text while it is waited for.
    ///
    /// What another program has taken for something else since it was borrowed is borrowed once
    /// more. False where it has been taken again by then: the application would paste that.
    [[nodiscard]] bool beginPaste(xcb_window_t window, bool isOwn);
    /// Waits until that application has been given the text, for no longer than that second. What
    /// is sent to it afterwards reaches it afterwards. Whether it was given it; the last paste's
    /// answer stays until the next `borrow`.
    bool awaitPaste();

Q_SIGNALS:
    void pasteServed();

private:
    /// A paste that an application was told to do.
    struct Paste
    {
        xcb_window_t window = XCB_WINDOW_NONE;
        SelectionServer::Ownership offered;
        QDeadlineTimer deadline;
        bool isOwn = false;
        bool served = false;
    };

    void handleEvent(const xcb_generic_event_t *event);
    void handleRequest(const xcb_selection_request_event_t &request);
    [[nodiscard]] const SelectionServer::Ownership *owned(xcb_atom_t selection) const;
    /// Whether the application that was told to paste has yet to be given the text.
    [[nodiscard]] bool isPasteUnderWay() const;
    void awaitNotice();
    /// Whether every selection that the paste needs holds its text.
    [[nodiscard]] bool holdsText();
    void takeTextAgain();
    void continueGivingBack();
    [[nodiscard]] bool hasClipboardManager();
    void saveToClipboardManager();

    std::shared_ptr<X11Connection> m_connection;
    SelectionAtoms m_atoms;
    X11Clients m_clients;
    SelectionWindow m_window;
    SelectionServer m_server;
    BorrowedSelection m_clipboard;
    BorrowedSelection m_primary;
    std::optional<Paste> m_paste;
    /// What was borrowed for; nothing when it has been given back.
    std::optional<QString> m_text;
    bool m_isPrimaryLent = false;
    /// The selections are to be given back as soon as that can be.
    bool m_isGivingBack = false;
    QTimer m_pasteEnd;
    /// Counts what others have asked for.
    unsigned m_requests = 0;
    bool m_managerHasSaved = false;
};

} // namespace Velloro
