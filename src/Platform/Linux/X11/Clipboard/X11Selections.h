#pragma once

#include "Platform/Linux/Clipboard/Selections.h"
#include "Platform/Linux/X11/Clipboard/BorrowedSelection.h"
#include "Platform/Linux/X11/X11Clients.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <optional>

namespace Velloro {

/// The selections of an X server. It tells who has read them.
///
/// The connection must be this object's own: while another program is waited for, only what
/// concerns the selections is dealt with.
class X11Selections final : public QObject, public Selections
{
    Q_OBJECT

public:
    explicit X11Selections(std::shared_ptr<X11Connection> connection);
    /// Hands what the user has on the clipboard to the clipboard manager if one runs, so that it
    /// outlives the program. What is still being read is waited for, two seconds at most.
    ~X11Selections() override;

    void setString(const QString &text) override;
    void follow() override;
    void unfollow() override;
    void borrow(const QString &text) override;
    void lendToPrimarySelection() override;
    void giveBack() override;

    /// The application of the target's window is given the borrowed text whenever it asks, although
    /// the clipboard may hold something else by then; once, and for a second at most. In Wine
    /// another process may ask for it: all windows have their clipboard from one. A window of this
    /// program's own can't fetch the text while it is waited for.
    [[nodiscard]] bool beginPaste(const PasteTarget &target) override;
    /// What is sent to the application afterwards reaches it after the text.
    bool awaitPaste() override;

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
