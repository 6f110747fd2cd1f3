#pragma once

#include "Platform/Linux/X11/Clipboard/SelectionReader.h"
#include "Platform/Linux/X11/Clipboard/SelectionServer.h"

#include <QObject>
#include <memory>
#include <optional>

namespace Velloro {

/// A selection of the user's that is borrowed for pastes: what it held is read beforehand and is
/// held by us, in the same forms, when it is given back.
///
/// Who takes the selection while it is borrowed has it: nothing is given back then. What could not
/// be read when it was borrowed is waited for before it is given back, since a program that was
/// busy still answers what it was asked before.
class BorrowedSelection final : public QObject
{
    Q_OBJECT

public:
    /// What becomes of the text that was pasted, where there was nothing before it.
    enum class WhenEmpty { keepsText, isGivenUp };

    /// `atoms` and `window` outlive this.
    BorrowedSelection(std::shared_ptr<X11Connection> connection, const SelectionAtoms &atoms,
                      SelectionWindow &window, xcb_atom_t selection, SelectionReader::Forms forms,
                      WhenEmpty whenEmpty);

    [[nodiscard]] xcb_atom_t selection() const { return m_selection; }
    /// What it holds when it is ours; null otherwise.
    [[nodiscard]] const SelectionServer::Ownership *owned() const;
    [[nodiscard]] bool isBorrowed() const { return m_isBorrowed; }

    /// Reads what another program has in it, and again whenever that changes, until `unfollow`.
    /// Waits for nothing.
    void follow();
    void unfollow();

    /// Puts a content there for good.
    void own(SelectionContent content);
    /// Puts a content there until `giveBack`. What is displaced is waited for where it has not been
    /// read yet: 120 ms without a sign of life and half a second at most.
    void borrow(SelectionContent content);
    /// Whether this text, in UTF-8, is there now: borrowed by us, or in the hands of a program that
    /// has taken it over, as some clipboard managers do. Waits like `borrow` for what another
    /// program has.
    [[nodiscard]] bool holds(const QByteArray &text);
    /// Puts back what was displaced. What is still being read then delays it: it is to be called
    /// again at `read`.
    void giveBack();
    /// Waits for what is still being read, so that it can be given back. What has not been sent by
    /// then is lost.
    void finishReading(const QDeadlineTimer &deadline);

    void handleEvent(const xcb_generic_event_t *event);

Q_SIGNALS:
    /// The displaced content has been read as far as it can be.
    void read();

private:
    [[nodiscard]] bool isReading() const { return m_reader && !m_reader->isFinished(); }
    [[nodiscard]] xcb_window_t owner() const;
    void startReading();
    void awaitReading();
    void take(SelectionContent content, xcb_timestamp_t now);
    void giveUp();
    /// Somebody else has taken it.
    void lose();
    void handleNewOwner(xcb_window_t owner, xcb_timestamp_t since);

    std::shared_ptr<X11Connection> m_connection;
    const SelectionAtoms &m_atoms;
    SelectionWindow &m_window;
    const xcb_atom_t m_selection;
    const SelectionReader::Forms m_forms;
    const WhenEmpty m_whenEmpty;
    std::optional<SelectionServer::Ownership> m_owned;
    std::unique_ptr<SelectionReader> m_reader;
    /// Whose content is read or has been read.
    xcb_window_t m_readOwner = XCB_WINDOW_NONE;
    std::optional<SelectionContent> m_displaced;
    bool m_isFollowing = false;
    /// A reading is about to begin, and the selection has changed hands meanwhile.
    bool m_isStarting = false;
    bool m_hasChanged = false;
    bool m_isBorrowed = false;
};

} // namespace Velloro
