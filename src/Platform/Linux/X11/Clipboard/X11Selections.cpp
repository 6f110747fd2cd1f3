#include "Platform/Linux/X11/Clipboard/X11Selections.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto pastePatience = 1s;
// Who watches the clipboard asks within a few milliseconds.
constexpr auto noticePatience = 20ms;
constexpr auto longestNotice = 100ms;
// How long a clipboard manager may give no sign of life, and take altogether.
constexpr auto savingPatience = 250ms;
constexpr auto longestSaving = 2s;
// For what is still being read at the end.
constexpr auto longestEnd = 2s;

} // namespace

X11Selections::X11Selections(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
    , m_atoms(*m_connection)
    , m_clients(m_connection)
    , m_window(m_connection)
    , m_server(m_connection, m_atoms)
    , m_clipboard(m_connection, m_atoms, m_window, m_atoms.clipboard, SelectionReader::Forms::all,
                  BorrowedSelection::WhenEmpty::keepsText)
    , m_primary(m_connection, m_atoms, m_window, XCB_ATOM_PRIMARY, SelectionReader::Forms::text,
                BorrowedSelection::WhenEmpty::isGivenUp)
{
    connect(m_connection.get(), &X11Connection::eventReceived, this, &X11Selections::handleEvent);
    // Later: giving back waits for the server, and these come from the midst of its events.
    for (const BorrowedSelection *each : {&m_clipboard, &m_primary}) {
        connect(each, &BorrowedSelection::read, this, &X11Selections::continueGivingBack,
                Qt::QueuedConnection);
    }
    connect(this, &X11Selections::pasteServed, this, &X11Selections::continueGivingBack,
            Qt::QueuedConnection);
    m_pasteEnd.setSingleShot(true);
    connect(&m_pasteEnd, &QTimer::timeout, this, &X11Selections::continueGivingBack);
}

X11Selections::~X11Selections()
{
    if (m_connection->isAlive() && hasClipboardManager()) {
        m_clipboard.finishReading(QDeadlineTimer(longestEnd));
        m_clipboard.giveBack();
        saveToClipboardManager();
    }
    disconnect(m_connection.get(), nullptr, this, nullptr);
}

void X11Selections::setString(const QString &text)
{
    if (!m_connection->isAlive())
        return;
    m_text.reset();
    m_clipboard.own(SelectionContent::ofText(m_atoms, text));
}

void X11Selections::follow()
{
    if (!m_connection->isAlive())
        return;
    m_clipboard.follow();
    m_primary.follow();
}

void X11Selections::unfollow()
{
    m_clipboard.unfollow();
    m_primary.unfollow();
}

void X11Selections::borrow(const QString &text)
{
    if (!m_connection->isAlive())
        return;
    m_isGivingBack = false;
    // The paste before keeps its own text until it has been served.
    if (!isPasteUnderWay())
        m_paste.reset();
    m_text = text;
    m_isPrimaryLent = false;
    m_clipboard.borrow(SelectionContent::ofPassingText(m_atoms, text));
    awaitNotice();
}

void X11Selections::awaitNotice()
{
    // The server had told everybody who watches the clipboard when it answered `borrow`: a program
    // that reads it in the same connection as its keys meets the news before the stroke. In others
    // a second process watches, and takes over the list of forms before the paste can be told from
    // the one before: Wine's desktop does, for all its windows. Such a process asks for that list
    // as soon as it knows, so the stroke waits until nobody asks any more.
    const QDeadlineTimer end(longestNotice);
    unsigned before = 0;
    do {
        before = m_requests;
    } while (m_connection->dispatchUntil([&] { return m_requests != before; },
                                         std::min(QDeadlineTimer(noticePatience), end)));
}

void X11Selections::lendToPrimarySelection()
{
    if (!m_connection->isAlive() || !m_text)
        return;
    m_isPrimaryLent = true;
    m_primary.borrow(SelectionContent::ofPassingText(m_atoms, *m_text));
}

void X11Selections::giveBack()
{
    if (!m_connection->isAlive())
        return;
    m_text.reset();
    m_isGivingBack = true;
    m_connection->dispatchPending();
    continueGivingBack();
}

void X11Selections::continueGivingBack()
{
    if (!m_isGivingBack)
        return;
    if (isPasteUnderWay()) {
        m_pasteEnd.start(static_cast<int>(m_paste->deadline.remainingTime()) + 1);
        return;
    }
    m_clipboard.giveBack();
    m_primary.giveBack();
    // What is still being read comes back when it has been.
    m_isGivingBack = m_clipboard.isBorrowed() || m_primary.isBorrowed();
}

bool X11Selections::beginPaste(const PasteTarget &target)
{
    if (!m_connection->isAlive() || !m_text)
        return true;
    if (!holdsText()) {
        takeTextAgain();
        if (!holdsText())
            return false;
    }
    // Who has taken the text over does not tell who fetches it.
    m_paste.reset();
    const auto window = static_cast<xcb_window_t>(target.window);
    if (m_clipboard.owned() && window != XCB_WINDOW_NONE) {
        m_paste
            = {window, *m_clipboard.owned(), QDeadlineTimer(pastePatience), target.isOwn, false};
    }
    return true;
}

bool X11Selections::holdsText()
{
    const QByteArray text = m_text->toUtf8();
    return m_clipboard.holds(text) && (!m_isPrimaryLent || m_primary.holds(text));
}

void X11Selections::takeTextAgain()
{
    const SelectionContent content = SelectionContent::ofPassingText(m_atoms, *m_text);
    m_clipboard.borrow(content);
    if (m_isPrimaryLent)
        m_primary.borrow(content);
    awaitNotice();
}

bool X11Selections::awaitPaste()
{
    if (!m_connection->isAlive() || !m_paste)
        return false;
    if (m_paste->isOwn)
        return m_paste->served;
    m_connection->dispatchUntil([this] { return m_paste->served && m_server.isIdle(); },
                                m_paste->deadline);
    // The server has passed it on when it answers.
    const XcbReply<xcb_get_input_focus_reply_t> passedOn(xcb_get_input_focus_reply(
        m_connection->xcb(), xcb_get_input_focus(m_connection->xcb()), nullptr));
    return m_paste->served;
}

bool X11Selections::isPasteUnderWay() const
{
    return m_paste && !m_paste->served && !m_paste->deadline.hasExpired();
}

const SelectionServer::Ownership *X11Selections::owned(xcb_atom_t selection) const
{
    for (const BorrowedSelection *each : {&m_clipboard, &m_primary}) {
        if (each->selection() == selection)
            return each->owned();
    }
    return nullptr;
}

void X11Selections::handleEvent(const xcb_generic_event_t *event)
{
    m_window.handleEvent(event);
    m_server.handleEvent(event);
    m_clipboard.handleEvent(event);
    m_primary.handleEvent(event);
    const uint8_t type = event->response_type & 0x7f;
    if (type == XCB_SELECTION_REQUEST) {
        handleRequest(*reinterpret_cast<const xcb_selection_request_event_t *>(event));
    } else if (type == XCB_SELECTION_NOTIFY) {
        const auto &answer = *reinterpret_cast<const xcb_selection_notify_event_t *>(event);
        m_managerHasSaved |= answer.selection == m_atoms.clipboardManager;
    }
}

void X11Selections::handleRequest(const xcb_selection_request_event_t &request)
{
    ++m_requests;
    const SelectionServer::Ownership *asked = owned(request.selection);
    const bool isPaste = asked && isPasteUnderWay()
        && m_clients.shareClipboard(request.requestor, m_paste->window);
    const bool hasText = m_server.answer(request, isPaste ? &m_paste->offered : asked);
    if (isPaste && hasText) {
        m_paste->served = true;
        Q_EMIT pasteServed();
    }
}

bool X11Selections::hasClipboardManager()
{
    xcb_connection_t *xcb = m_connection->xcb();
    const XcbReply<xcb_get_selection_owner_reply_t> manager(xcb_get_selection_owner_reply(
        xcb, xcb_get_selection_owner(xcb, m_atoms.clipboardManager), nullptr));
    return manager && manager->owner != XCB_WINDOW_NONE;
}

void X11Selections::saveToClipboardManager()
{
    m_connection->dispatchPending();
    if (!m_clipboard.owned() || m_clipboard.owned()->content.forms.empty())
        return;
    xcb_connection_t *xcb = m_connection->xcb();
    std::vector<xcb_atom_t> targets;
    for (const SelectionContent::Form &form : m_clipboard.owned()->content.forms)
        targets.push_back(form.target);
    const xcb_atom_t property = m_window.unusedProperty();
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, m_window.id(), property, XCB_ATOM_ATOM, 32,
                        static_cast<uint32_t>(targets.size()), targets.data());
    xcb_convert_selection(xcb, m_window.id(), m_atoms.clipboardManager, m_atoms.saveTargets,
                          property, m_window.serverTime());
    m_managerHasSaved = false;
    const QDeadlineTimer end(longestSaving);
    unsigned before = 0;
    do {
        before = m_requests;
    } while (m_connection->dispatchUntil([&] { return m_managerHasSaved || m_requests != before; },
                                         std::min(QDeadlineTimer(savingPatience), end))
             && !m_managerHasSaved);
}

} // namespace Velloro
