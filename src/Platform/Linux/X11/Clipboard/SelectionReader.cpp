#include "Platform/Linux/X11/Clipboard/SelectionReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 10s;
constexpr auto longestReading = 60s;
constexpr qsizetype largestContent = 64 * 1024 * 1024;

/// Whether the type says that the data names something in the X server that is the owner's own and
/// ends with it.
bool isOwnersResource(xcb_atom_t type)
{
    return type == XCB_ATOM_PIXMAP || type == XCB_ATOM_BITMAP || type == XCB_ATOM_DRAWABLE
        || type == XCB_ATOM_COLORMAP || type == XCB_ATOM_WINDOW || type == XCB_ATOM_CURSOR
        || type == XCB_ATOM_FONT;
}

} // namespace

SelectionReader::SelectionReader(std::shared_ptr<X11Connection> connection,
                                 const SelectionAtoms &atoms, SelectionWindow &window,
                                 xcb_atom_t selection, Forms forms, xcb_timestamp_t now)
    : m_connection(std::move(connection))
    , m_atoms(atoms)
    , m_window(window)
    , m_selection(selection)
    , m_scope(forms)
    , m_time(now)
    , m_end(longestReading)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, &SelectionReader::finish);
    m_patience.start();
    // The text at once, without knowing whether there is one: a program that is busy now will
    // answer what it was asked while it still owned the selection.
    ask(m_atoms.targets);
    ask(m_atoms.utf8String);
    m_connection->flush();
}

SelectionContent SelectionReader::takeContent()
{
    const auto place = [this](const SelectionContent::Form &form) {
        return std::ranges::find(m_ownersOrder, form.target) - m_ownersOrder.begin();
    };
    if (m_knowsForms) {
        // Some programs answer whatever they are asked for.
        std::erase_if(m_content.forms, [&](const SelectionContent::Form &form) {
            return place(form) == std::ssize(m_ownersOrder);
        });
        std::ranges::stable_sort(m_content.forms, {}, place);
    }
    return std::move(m_content);
}

void SelectionReader::askForRest()
{
    if (m_isFinished || !m_mayAsk)
        return;
    if (!m_knowsForms) {
        m_wanted = {XCB_ATOM_STRING};
        if (m_scope == Forms::all)
            m_wanted.insert(m_wanted.end(), m_atoms.copiedMost.begin(), m_atoms.copiedMost.end());
    }
    for (const xcb_atom_t target : std::exchange(m_wanted, {}))
        ask(target);
    m_mayAsk = false;
    m_connection->flush();
}

void SelectionReader::finish()
{
    if (std::exchange(m_isFinished, true))
        return;
    m_patience.stop();
    m_requests.clear();
    Q_EMIT finished();
}

void SelectionReader::ask(xcb_atom_t target)
{
    Request request;
    request.form.target = target;
    request.property = m_window.unusedProperty();
    xcb_convert_selection(m_connection->xcb(), m_window.id(), m_selection, target, request.property,
                          m_time);
    m_requests.push_back(std::move(request));
}

void SelectionReader::askForNext()
{
    if (!m_requests.empty())
        return;
    if (m_wanted.empty() || m_end.hasExpired()) {
        finish();
        return;
    }
    ask(m_wanted.front());
    m_wanted.pop_front();
    m_connection->flush();
}

void SelectionReader::handleEvent(const xcb_generic_event_t *event)
{
    if (m_isFinished)
        return;
    switch (event->response_type & 0x7f) {
    case XCB_SELECTION_NOTIFY:
        handleAnswer(*reinterpret_cast<const xcb_selection_notify_event_t *>(event));
        break;
    case XCB_PROPERTY_NOTIFY: {
        const auto &change = *reinterpret_cast<const xcb_property_notify_event_t *>(event);
        if (change.window != m_window.id() || change.state != XCB_PROPERTY_NEW_VALUE)
            break;
        const auto request = std::ranges::find(m_requests, change.atom, &Request::property);
        if (request != m_requests.end() && request->comesInPieces)
            handlePiece(*request);
        break;
    }
    default:
        break;
    }
}

void SelectionReader::handleAnswer(const xcb_selection_notify_event_t &answer)
{
    if (answer.requestor != m_window.id() || answer.selection != m_selection)
        return;
    // A refusal names no property. A late one, to an earlier reading, has its time.
    const auto request = std::ranges::find_if(m_requests, [&](const Request &candidate) {
        return answer.property == candidate.property
            || (answer.property == XCB_ATOM_NONE && answer.target == candidate.form.target
                && answer.time == m_time);
    });
    if (request == m_requests.end() || request->comesInPieces)
        return;
    ++m_progress;
    m_patience.start();
    if (answer.property == XCB_ATOM_NONE) {
        complete(*request, false);
        return;
    }
    SelectionContent::Form content = m_window.takeProperty(request->property);
    if (content.type == m_atoms.incr) {
        // Deleting the property has asked for the first piece.
        request->comesInPieces = true;
        m_connection->flush();
        return;
    }
    content.target = request->form.target;
    request->form = std::move(content);
    complete(*request, request->form.type != XCB_ATOM_NONE);
}

void SelectionReader::handlePiece(Request &request)
{
    const SelectionContent::Form piece = m_window.takeProperty(request.property);
    m_connection->flush();
    // Deleted by the owner before we came to it.
    if (piece.type == XCB_ATOM_NONE)
        return;
    ++m_progress;
    m_patience.start();
    if (piece.data.isEmpty()) {
        complete(request, !request.isLeftOut);
        return;
    }
    request.form.type = piece.type;
    request.form.format = piece.format;
    // The rest of what is too large is taken, too: the owner waits for that.
    if (request.isLeftOut || !fits(request.form.data.size() + piece.data.size())) {
        request.isLeftOut = true;
        request.form.data.clear();
    } else {
        request.form.data += piece.data;
    }
    if (m_end.hasExpired())
        finish();
}

void SelectionReader::complete(const Request &request, bool isWhole)
{
    Request done = request;
    std::erase_if(m_requests, [&](const Request &each) { return each.property == done.property; });
    if (done.form.target == m_atoms.targets)
        chooseForms(done.form);
    else if (isWhole)
        keep(std::move(done.form));
    askForNext();
}

void SelectionReader::chooseForms(const SelectionContent::Form &targets)
{
    if (targets.format == 32) {
        m_ownersOrder.resize(targets.data.size() / sizeof(xcb_atom_t));
        std::memcpy(m_ownersOrder.data(), targets.data.constData(),
                    m_ownersOrder.size() * sizeof(xcb_atom_t));
    }
    // An old program that can't say what it has.
    if (m_ownersOrder.empty())
        m_ownersOrder = {m_atoms.utf8String, XCB_ATOM_STRING};
    m_knowsForms = true;
    // The selection has another owner by now.
    if (!m_mayAsk)
        return;

    for (const xcb_atom_t target : m_ownersOrder) {
        if (isWanted(target) && std::ranges::find(m_wanted, target) == m_wanted.end())
            m_wanted.push_back(target);
    }
    std::ranges::stable_partition(m_wanted,
                                  [this](xcb_atom_t each) { return m_atoms.isText(each); });
}

bool SelectionReader::isWanted(xcb_atom_t target) const
{
    if (m_scope == Forms::text)
        return m_atoms.isText(target) && target != m_atoms.utf8String;
    const xcb_atom_t others[] = {// Asked for already.
                                 m_atoms.utf8String, XCB_ATOM_NONE,
                                 // About the ownership, not the content.
                                 m_atoms.targets, m_atoms.timestamp, m_atoms.multiple,
                                 m_atoms.saveTargets,
                                 // These do something.
                                 m_atoms.deletion, m_atoms.insertSelection, m_atoms.insertProperty};
    return std::ranges::find(others, target) == std::end(others);
}

bool SelectionReader::fits(qsizetype size) const
{
    return m_size + size <= largestContent;
}

void SelectionReader::keep(SelectionContent::Form form)
{
    if (isOwnersResource(form.type) || !fits(form.data.size()))
        return;
    m_size += form.data.size();
    m_content.forms.push_back(std::move(form));
}

} // namespace Velloro
