#pragma once

#include "Platform/Linux/X11/Clipboard/SelectionTransfers.h"

namespace Velloro {

/// Answers what other programs ask about the selections that we own.
class SelectionServer
{
public:
    /// What a selection of ours holds, and since when.
    struct Ownership
    {
        SelectionContent content;
        xcb_timestamp_t since = XCB_CURRENT_TIME;
    };

    /// `atoms` outlives this.
    SelectionServer(std::shared_ptr<X11Connection> connection, const SelectionAtoms &atoms);

    /// Gives the requestor what it asks for, or refuses where there is no such form or `owned` is
    /// null. Whether it was given the text, in any form.
    bool answer(const xcb_selection_request_event_t &request, const Ownership *owned);
    /// Whether everything that was given has been taken.
    [[nodiscard]] bool isIdle() const { return m_transfers.isEmpty(); }

    void handleEvent(const xcb_generic_event_t *event) { m_transfers.handleEvent(event); }

private:
    /// Writes the form of `target` to the requestor; false where there is none.
    bool convert(const Ownership &owned, xcb_window_t requestor, xcb_atom_t target,
                 xcb_atom_t property);
    /// Writes several; the requestor's property lists their targets and properties.
    bool convertMultiple(const Ownership &owned, xcb_window_t requestor, xcb_atom_t property);
    void sendTargets(const SelectionContent &content, xcb_window_t requestor, xcb_atom_t property);

    std::shared_ptr<X11Connection> m_connection;
    const SelectionAtoms &m_atoms;
    SelectionTransfers m_transfers;
    bool m_hasGivenText = false;
};

} // namespace Velloro
