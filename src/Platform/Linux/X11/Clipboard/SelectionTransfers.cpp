#include "Platform/Linux/X11/Clipboard/SelectionTransfers.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 30s;
constexpr qsizetype largestPiece = 256 * 1024;

} // namespace

SelectionTransfers::SelectionTransfers(std::shared_ptr<X11Connection> connection,
                                       const SelectionAtoms &atoms)
    : m_connection(std::move(connection))
    , m_atoms(atoms)
{
    // The limit counts units of four bytes and includes the request's own head.
    m_pieceSize = std::min<qsizetype>(
        largestPiece, qsizetype(xcb_get_maximum_request_length(m_connection->xcb())) * 4 - 256);
    m_timeout.setInterval(patience);
    connect(&m_timeout, &QTimer::timeout, this, &SelectionTransfers::dropStale);
}

void SelectionTransfers::send(xcb_window_t receiver, xcb_atom_t property,
                              const SelectionContent::Form &form)
{
    if (form.data.size() <= m_pieceSize) {
        write(receiver, property, form, 0, form.data.size());
        return;
    }
    // The receiver's deletion of the property asks for each piece.
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection->xcb(), receiver, XCB_CW_EVENT_MASK, &events);
    const auto size = static_cast<uint32_t>(std::min<qsizetype>(form.data.size(), INT32_MAX));
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, receiver, property,
                        m_atoms.incr, 32, 1, &size);
    std::erase_if(m_transfers, [&](const Transfer &transfer) {
        return transfer.receiver == receiver && transfer.property == property;
    });
    m_transfers.push_back({receiver, property, form, 0, QDeadlineTimer(patience)});
    if (!m_timeout.isActive())
        m_timeout.start();
}

void SelectionTransfers::write(xcb_window_t receiver, xcb_atom_t property,
                               const SelectionContent::Form &form, qsizetype from, qsizetype size)
{
    const qsizetype units = size / (form.format / 8);
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, receiver, property, form.type,
                        form.format, static_cast<uint32_t>(units), form.data.constData() + from);
}

void SelectionTransfers::handleEvent(const xcb_generic_event_t *event)
{
    if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY)
        return;
    const auto &change = *reinterpret_cast<const xcb_property_notify_event_t *>(event);
    if (change.state != XCB_PROPERTY_DELETE)
        return;
    const auto transfer = std::ranges::find_if(m_transfers, [&](const Transfer &candidate) {
        return candidate.receiver == change.window && candidate.property == change.atom;
    });
    if (transfer == m_transfers.end())
        return;

    // The receiver has taken the last piece. An empty one ends the content.
    const qsizetype size = std::min(m_pieceSize, transfer->form.data.size() - transfer->sent);
    write(transfer->receiver, transfer->property, transfer->form, transfer->sent, size);
    transfer->sent += size;
    transfer->deadline.setRemainingTime(patience);
    if (size == 0)
        m_transfers.erase(transfer);
    m_connection->flush();
}

void SelectionTransfers::dropStale()
{
    std::erase_if(m_transfers,
                  [](const Transfer &transfer) { return transfer.deadline.hasExpired(); });
    if (m_transfers.empty())
        m_timeout.stop();
}

} // namespace Velloro
