#pragma once

#include "Platform/Linux/X11/Clipboard/SelectionWindow.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>
#include <deque>
#include <optional>

namespace Velloro {

/// Reads once what another program holds in a selection, without waiting for it.
///
/// An owner is asked for one form after the other, and given up when it gives no sign of life for
/// ten seconds, or is not done after a minute. What it has sent by then counts. Forms beyond 64 MiB
/// in all are left out, text and the forms that the owner names first being read first.
class SelectionReader final : public QObject
{
    Q_OBJECT

public:
    enum class Forms { all, text };

    /// Begins; `now` is the X server's present time. `window` and `atoms` outlive the reader.
    SelectionReader(std::shared_ptr<X11Connection> connection, const SelectionAtoms &atoms,
                    SelectionWindow &window, xcb_atom_t selection, Forms forms,
                    xcb_timestamp_t now);

    [[nodiscard]] bool isFinished() const { return m_isFinished; }
    /// Counts the owner's signs of life.
    [[nodiscard]] unsigned progress() const { return m_progress; }
    /// What has been read, in the owner's order; to be asked for once, when the reading is
    /// finished.
    [[nodiscard]] SelectionContent takeContent();

    /// The selection is about to be taken from its owner: asks for everything at once that is left
    /// to be asked, since it answers later what it is asked now. While it has not said what it has,
    /// that is what is copied most.
    void askForRest();
    /// The owner has gone: nothing more will come.
    void finish();
    void handleEvent(const xcb_generic_event_t *event);

Q_SIGNALS:
    void finished();

private:
    /// A conversion that the owner has been asked for.
    struct Request
    {
        SelectionContent::Form form;
        xcb_atom_t property = XCB_ATOM_NONE;
        bool comesInPieces = false;
        bool isLeftOut = false;
    };

    void ask(xcb_atom_t target);
    void askForNext();
    void handleAnswer(const xcb_selection_notify_event_t &answer);
    void handlePiece(Request &request);
    /// The request is dealt with; `isWhole` unless it was refused.
    void complete(const Request &request, bool isWhole);
    void chooseForms(const SelectionContent::Form &targets);
    void keep(SelectionContent::Form form);
    /// Whether a form can be handed on: no action, nothing that only its owner can say.
    [[nodiscard]] bool isWanted(xcb_atom_t target) const;
    [[nodiscard]] bool fits(qsizetype size) const;

    std::shared_ptr<X11Connection> m_connection;
    const SelectionAtoms &m_atoms;
    SelectionWindow &m_window;
    const xcb_atom_t m_selection;
    const Forms m_scope;
    const xcb_timestamp_t m_time;
    std::vector<Request> m_requests;
    std::deque<xcb_atom_t> m_wanted;
    std::vector<xcb_atom_t> m_ownersOrder;
    SelectionContent m_content;
    qsizetype m_size = 0;
    QTimer m_patience;
    QDeadlineTimer m_end;
    unsigned m_progress = 0;
    bool m_knowsForms = false;
    bool m_mayAsk = true;
    bool m_isFinished = false;
};

} // namespace Velloro
