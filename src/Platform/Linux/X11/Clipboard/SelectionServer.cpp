#include "Platform/Linux/X11/Clipboard/SelectionServer.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <utility>

namespace Velloro {

SelectionServer::SelectionServer(std::shared_ptr<X11Connection> connection,
                                 const SelectionAtoms &atoms)
    : m_connection(std::move(connection))
    , m_atoms(atoms)
    , m_transfers(m_connection, atoms)
{
}

bool SelectionServer::answer(const xcb_selection_request_event_t &request, const Ownership *owned)
{
    // Old programs name no property and mean the target's name.
    const xcb_atom_t property = request.property == XCB_ATOM_NONE ? request.target
                                                                  : request.property;
    m_hasGivenText = false;
    bool done = false;
    if (owned) {
        done = request.target == m_atoms.multiple
            ? request.property != XCB_ATOM_NONE
                && convertMultiple(*owned, request.requestor, property)
            : convert(*owned, request.requestor, request.target, property);
    }

    // Events are always of 32 bytes.
    union {
        xcb_selection_notify_event_t event;
        char padding[32];
    } answer{};
    answer.event.response_type = XCB_SELECTION_NOTIFY;
    answer.event.time = request.time;
    answer.event.requestor = request.requestor;
    answer.event.selection = request.selection;
    answer.event.target = request.target;
    answer.event.property = done ? property : xcb_atom_t(XCB_ATOM_NONE);
    xcb_send_event(m_connection->xcb(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                   answer.padding);
    m_connection->flush();
    return m_hasGivenText;
}

bool SelectionServer::convert(const Ownership &owned, xcb_window_t requestor, xcb_atom_t target,
                              xcb_atom_t property)
{
    xcb_connection_t *xcb = m_connection->xcb();
    if (target == m_atoms.targets) {
        sendTargets(owned.content, requestor, property);
        return true;
    }
    if (target == m_atoms.timestamp) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32,
                            1, &owned.since);
        return true;
    }
    if (target == m_atoms.saveTargets) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, m_atoms.null, 32, 0,
                            nullptr);
        return true;
    }
    const SelectionContent::Form *form = owned.content.form(target);
    if (!form)
        return false;
    m_transfers.send(requestor, property, *form);
    m_hasGivenText |= m_atoms.isText(target);
    return true;
}

void SelectionServer::sendTargets(const SelectionContent &content, xcb_window_t requestor,
                                  xcb_atom_t property)
{
    std::vector<xcb_atom_t> targets
        = {m_atoms.targets, m_atoms.timestamp, m_atoms.multiple, m_atoms.saveTargets};
    for (const SelectionContent::Form &form : content.forms)
        targets.push_back(form.target);
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, requestor, property,
                        XCB_ATOM_ATOM, 32, static_cast<uint32_t>(targets.size()), targets.data());
}

bool SelectionServer::convertMultiple(const Ownership &owned, xcb_window_t requestor,
                                      xcb_atom_t property)
{
    constexpr uint32_t most = 1024;
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(m_connection->xcb(),
                               xcb_get_property(m_connection->xcb(), 0, requestor, property,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, most),
                               nullptr));
    if (!reply || reply->format != 32)
        return false;
    const auto *atoms = static_cast<const xcb_atom_t *>(xcb_get_property_value(reply.get()));
    std::vector<xcb_atom_t> pairs(atoms, atoms + reply->value_len / 2 * 2);
    for (size_t i = 0; i < pairs.size(); i += 2) {
        // What there is not is marked in the list.
        if (pairs[i] == m_atoms.multiple || pairs[i + 1] == XCB_ATOM_NONE
            || !convert(owned, requestor, pairs[i], pairs[i + 1]))
            pairs[i + 1] = XCB_ATOM_NONE;
    }
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, requestor, property,
                        m_atoms.atomPair, 32, static_cast<uint32_t>(pairs.size()), pairs.data());
    return true;
}

} // namespace Velloro
