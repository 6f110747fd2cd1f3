#include "Platform/Linux/X11/Clipboard/BorrowedSelection.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <QScopedValueRollback>
#include <algorithm>
#include <utility>
#include <xcb/xfixes.h>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

// The paste waits for it.
constexpr auto patience = 120ms;
constexpr auto longestWait = 500ms;

/// Whether the X server's clock, which starts again from zero, reads `time` at `since` or later.
bool isSince(xcb_timestamp_t time, xcb_timestamp_t since)
{
    return time == XCB_CURRENT_TIME || int32_t(time - since) >= 0;
}

} // namespace

BorrowedSelection::BorrowedSelection(std::shared_ptr<X11Connection> connection,
                                     const SelectionAtoms &atoms, SelectionWindow &window,
                                     xcb_atom_t selection, SelectionReader::Forms forms,
                                     WhenEmpty whenEmpty)
    : m_connection(std::move(connection))
    , m_atoms(atoms)
    , m_window(window)
    , m_selection(selection)
    , m_forms(forms)
    , m_whenEmpty(whenEmpty)
{
    m_window.watchOwner(selection);
}

const SelectionServer::Ownership *BorrowedSelection::owned() const
{
    return m_owned ? &*m_owned : nullptr;
}

xcb_window_t BorrowedSelection::owner() const
{
    const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        m_connection->xcb(), xcb_get_selection_owner(m_connection->xcb(), m_selection), nullptr));
    return reply ? reply->owner : xcb_window_t(XCB_WINDOW_NONE);
}

void BorrowedSelection::follow()
{
    m_isFollowing = true;
    if (!m_owned)
        startReading();
}

void BorrowedSelection::unfollow()
{
    m_isFollowing = false;
    if (!m_isBorrowed) {
        m_reader.reset();
        m_displaced.reset();
    }
}

void BorrowedSelection::startReading()
{
    m_reader.reset();
    m_displaced.reset();
    // The time brings the news of every change before it, which are no reason to read twice, and
    // perhaps of a later one, whose owner would refuse what is asked with an earlier time.
    const QScopedValueRollback starting(m_isStarting, true);
    xcb_timestamp_t now = XCB_CURRENT_TIME;
    do {
        m_hasChanged = false;
        now = m_window.serverTime();
    } while (m_hasChanged);
    m_readOwner = owner();
    if (m_readOwner == XCB_WINDOW_NONE || m_readOwner == m_window.id())
        return;
    m_reader = std::make_unique<SelectionReader>(m_connection, m_atoms, m_window, m_selection,
                                                 m_forms, now);
    connect(m_reader.get(), &SelectionReader::finished, this, [this] {
        m_displaced = m_reader->takeContent();
        Q_EMIT read();
    });
}

void BorrowedSelection::awaitReading()
{
    const QDeadlineTimer end(longestWait);
    while (isReading()) {
        const unsigned before = m_reader->progress();
        const auto hasGoneOn = [&] { return !isReading() || m_reader->progress() != before; };
        if (!m_connection->dispatchUntil(hasGoneOn, std::min(QDeadlineTimer(patience), end)))
            return;
    }
}

void BorrowedSelection::own(SelectionContent content)
{
    m_isBorrowed = false;
    m_reader.reset();
    m_displaced.reset();
    take(std::move(content), m_window.serverTime());
}

void BorrowedSelection::borrow(SelectionContent content)
{
    const xcb_window_t current = owner();
    // The answer came after the news of every change before it.
    m_connection->dispatchPending();
    if (!m_isBorrowed) {
        if (m_owned) {
            m_displaced = m_owned->content;
        } else {
            // A program that has ended meanwhile can't be asked again.
            if (current != XCB_WINDOW_NONE && (current != m_readOwner || !m_reader))
                startReading();
            awaitReading();
            if (isReading())
                m_reader->askForRest();
        }
    }
    m_isBorrowed = true;
    take(std::move(content), m_window.serverTime());
}

bool BorrowedSelection::holds(const QByteArray &text)
{
    const xcb_window_t current = owner();
    // The answer came after the news of every change before it.
    m_connection->dispatchPending();
    if (current == m_window.id())
        return m_isBorrowed;
    if (current == XCB_WINDOW_NONE)
        return false;
    if (current != m_readOwner || !m_reader)
        startReading();
    awaitReading();
    const SelectionContent::Form *form = m_displaced ? m_displaced->form(m_atoms.utf8String)
                                                     : nullptr;
    const bool isSame = form && form->data == text;
    // Nobody would tell when it is out of date.
    if (!m_isFollowing) {
        m_reader.reset();
        m_displaced.reset();
    }
    return isSame;
}

void BorrowedSelection::giveBack()
{
    if (!m_isBorrowed || isReading())
        return;
    // Who takes it from now on has a later time, and the server refuses ours.
    const xcb_timestamp_t now = m_window.serverTime();
    if (!std::exchange(m_isBorrowed, false))
        return;
    const auto displaced = std::exchange(m_displaced, std::nullopt);
    if (displaced && !displaced->forms.empty())
        take(*displaced, now);
    else if (m_whenEmpty == WhenEmpty::isGivenUp)
        giveUp();
}

void BorrowedSelection::finishReading(const QDeadlineTimer &deadline)
{
    if (!m_isBorrowed)
        return;
    m_connection->dispatchUntil([this] { return !isReading(); }, deadline);
    if (m_reader)
        m_reader->finish();
}

void BorrowedSelection::take(SelectionContent content, xcb_timestamp_t now)
{
    xcb_set_selection_owner(m_connection->xcb(), m_window.id(), m_selection, now);
    if (owner() == m_window.id())
        m_owned = SelectionServer::Ownership{std::move(content), now};
    else
        lose();
}

void BorrowedSelection::giveUp()
{
    if (const auto owned = std::exchange(m_owned, std::nullopt)) {
        xcb_set_selection_owner(m_connection->xcb(), XCB_WINDOW_NONE, m_selection, owned->since);
        m_connection->flush();
    }
}

void BorrowedSelection::lose()
{
    m_owned.reset();
    m_isBorrowed = false;
    m_reader.reset();
    m_displaced.reset();
}

void BorrowedSelection::handleEvent(const xcb_generic_event_t *event)
{
    if (m_reader)
        m_reader->handleEvent(event);
    const uint8_t type = event->response_type & 0x7f;
    if (type == XCB_SELECTION_CLEAR) {
        const auto &clear = *reinterpret_cast<const xcb_selection_clear_event_t *>(event);
        // An old loss says nothing about what was taken since.
        if (clear.selection == m_selection && clear.owner == m_window.id() && m_owned
            && isSince(clear.time, m_owned->since))
            lose();
    } else if (m_window.ownerEvent() != 0 && type == m_window.ownerEvent()) {
        const auto &change = *reinterpret_cast<const xcb_xfixes_selection_notify_event_t *>(event);
        if (change.selection == m_selection)
            handleNewOwner(change.owner, change.selection_timestamp);
    }
}

void BorrowedSelection::handleNewOwner(xcb_window_t owner, xcb_timestamp_t since)
{
    if (owner == m_window.id() || (m_owned && !isSince(since, m_owned->since)))
        return;
    if (owner == XCB_WINDOW_NONE) {
        // The program has ended; what it has sent counts.
        if (m_reader)
            m_reader->finish();
        return;
    }
    lose();
    m_hasChanged = true;
    if (m_isFollowing && !m_isStarting)
        startReading();
}

} // namespace Velloro
