#pragma once

#include "Platform/Linux/X11/Clipboard/SelectionContent.h"
#include "Platform/Linux/X11/X11Connection.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>
#include <memory>
#include <vector>

namespace Velloro {

/// Sends the content of selections to other programs: at once, or in pieces as the receiver takes
/// them where it is more than the X server takes in one request. A receiver that takes no further
/// piece for half a minute is given up.
class SelectionTransfers final : public QObject
{
    Q_OBJECT

public:
    /// `atoms` outlives this.
    SelectionTransfers(std::shared_ptr<X11Connection> connection, const SelectionAtoms &atoms);

    void send(xcb_window_t receiver, xcb_atom_t property, const SelectionContent::Form &form);
    /// Whether nothing is left to be taken.
    [[nodiscard]] bool isEmpty() const { return m_transfers.empty(); }

    void handleEvent(const xcb_generic_event_t *event);

private:
    struct Transfer
    {
        xcb_window_t receiver = XCB_WINDOW_NONE;
        xcb_atom_t property = XCB_ATOM_NONE;
        SelectionContent::Form form;
        qsizetype sent = 0;
        QDeadlineTimer deadline;
    };

    void write(xcb_window_t receiver, xcb_atom_t property, const SelectionContent::Form &form,
               qsizetype from, qsizetype size);
    void dropStale();

    std::shared_ptr<X11Connection> m_connection;
    const SelectionAtoms &m_atoms;
    qsizetype m_pieceSize = 0;
    std::vector<Transfer> m_transfers;
    QTimer m_timeout;
};

} // namespace Velloro
