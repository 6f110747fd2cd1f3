#include "Platform/Linux/X11/X11Selections.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

// How long another program may keep us waiting without a sign of life.
constexpr auto patience = 120ms;
// And altogether, for both selections that a paste reads: the stroke waits for it.
constexpr std::chrono::milliseconds longestReading = 2 * patience;
// For the X server itself, without which nothing goes on.
constexpr auto serverPatience = 2s;
constexpr auto longestSaving = 250ms;
constexpr auto primaryLoan = 500ms;
constexpr auto pastePatience = 1s;
// A receiver that takes no further piece for so long has gone.
constexpr auto transferPatience = 30s;

constexpr qsizetype largestPiece = 256 * 1024;

bool isLatin1(const QString &text)
{
    return std::ranges::all_of(text, [](QChar c) { return c.unicode() < 256; });
}

} // namespace

X11Selections::X11Selections(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
{
    X11Connection &x11 = *m_connection;
    m_atoms = {
        .clipboard = x11.atom("CLIPBOARD"),
        .targets = x11.atom("TARGETS"),
        .timestamp = x11.atom("TIMESTAMP"),
        .multiple = x11.atom("MULTIPLE"),
        .utf8String = x11.atom("UTF8_STRING"),
        .text = x11.atom("TEXT"),
        .textPlain = x11.atom("text/plain"),
        .textPlainUtf8 = x11.atom("text/plain;charset=utf-8"),
        .incr = x11.atom("INCR"),
        .atomPair = x11.atom("ATOM_PAIR"),
        .clipboardManager = x11.atom("CLIPBOARD_MANAGER"),
        .saveTargets = x11.atom("SAVE_TARGETS"),
        .clock = x11.atom("VELLORO_CLOCK"),
    };
    // The limit counts units of four bytes and includes the request's own head.
    m_pieceSize = std::min<qsizetype>(
        largestPiece, qsizetype(xcb_get_maximum_request_length(x11.xcb())) * 4 - 256);

    m_window = xcb_generate_id(x11.xcb());
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(x11.xcb(), 0, m_window, x11.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    x11.flush();
    connect(&x11, &X11Connection::eventReceived, this, &X11Selections::handleEvent);

    m_transferTimeout.setInterval(transferPatience);
    connect(&m_transferTimeout, &QTimer::timeout, this, &X11Selections::dropStaleTransfers);
    m_primaryLoan.setSingleShot(true);
    connect(&m_primaryLoan, &QTimer::timeout, this, [this] {
        // A busy application may come round to its paste later.
        m_connection->dispatchPending();
        if (isPasteUnderWay())
            m_primaryLoan.start(static_cast<int>(m_paste->deadline.remainingTime()) + 1);
        else
            returnPrimarySelection();
    });
}

X11Selections::~X11Selections()
{
    if (!m_connection->isAlive())
        return;
    if (m_primaryLoan.isActive())
        returnPrimarySelection();
    saveToClipboardManager();
    disconnect(m_connection.get(), nullptr, this, nullptr);
    xcb_destroy_window(m_connection->xcb(), m_window);
    m_connection->flush();
}

std::optional<QString> X11Selections::string()
{
    if (!m_connection->isAlive())
        return std::nullopt;
    m_readingTime = 0ms;
    return read(m_atoms.clipboard);
}

void X11Selections::clearContents()
{
    // Emptied by owning nothing rather than by having no owner: a clipboard manager would take an
    // ownerless selection for a program that has ended, and put its text back.
    if (m_connection && m_connection->isAlive())
        own(m_atoms.clipboard, std::nullopt);
}

void X11Selections::setString(const QString &text)
{
    if (!m_connection->isAlive())
        return;
    own(m_atoms.clipboard, text.toUtf8());
}

void X11Selections::lendToPrimarySelection()
{
    if (!m_connection->isAlive() || !m_clipboard || !m_clipboard->text)
        return;
    if (!m_primaryLoan.isActive())
        m_primaryBefore = read(XCB_ATOM_PRIMARY);
    own(XCB_ATOM_PRIMARY, m_clipboard->text);
    m_primaryLoan.start(primaryLoan);
}

void X11Selections::beginPaste(xcb_window_t window)
{
    if (m_connection->isAlive() && m_clipboard && m_clipboard->text)
        m_paste = {clientOf(window), *m_clipboard->text, QDeadlineTimer(pastePatience), false};
}

bool X11Selections::awaitPaste()
{
    if (!m_connection->isAlive() || !m_paste)
        return false;
    m_connection->dispatchUntil([this] { return m_paste->served && m_transfers.empty(); },
                                m_paste->deadline);
    const bool served = m_paste->served;
    m_paste.reset();
    // The server has passed it on when it answers.
    const XcbReply<xcb_get_input_focus_reply_t> passedOn(xcb_get_input_focus_reply(
        m_connection->xcb(), xcb_get_input_focus(m_connection->xcb()), nullptr));
    return served;
}

uint32_t X11Selections::clientOf(xcb_window_t window) const
{
    return window & ~xcb_get_setup(m_connection->xcb())->resource_id_mask;
}

bool X11Selections::isPasteUnderWay() const
{
    return m_paste && !m_paste->served && !m_paste->deadline.hasExpired();
}

bool X11Selections::isText(xcb_atom_t target) const
{
    return target == m_atoms.utf8String || target == m_atoms.textPlainUtf8
        || target == m_atoms.textPlain || target == m_atoms.text || target == XCB_ATOM_STRING;
}

void X11Selections::returnPrimarySelection()
{
    m_primaryLoan.stop();
    const auto before = std::exchange(m_primaryBefore, std::nullopt);
    m_connection->dispatchPending();
    // Somebody has selected something else meanwhile.
    if (!m_primary)
        return;
    if (before)
        own(XCB_ATOM_PRIMARY, before->toUtf8());
    else
        giveUp(XCB_ATOM_PRIMARY);
}

xcb_timestamp_t X11Selections::serverTime()
{
    m_serverTimeArrived = false;
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_APPEND, m_window, m_atoms.clock,
                        XCB_ATOM_STRING, 8, 0, nullptr);
    m_connection->flush();
    m_connection->dispatchUntil([this] { return m_serverTimeArrived; },
                                QDeadlineTimer(serverPatience));
    return m_serverTime;
}

std::optional<X11Selections::Ownership> &X11Selections::ownership(xcb_atom_t selection)
{
    return selection == XCB_ATOM_PRIMARY ? m_primary : m_clipboard;
}

void X11Selections::own(xcb_atom_t selection, std::optional<QByteArray> text)
{
    const xcb_timestamp_t now = serverTime();
    xcb_connection_t *xcb = m_connection->xcb();
    xcb_set_selection_owner(xcb, m_window, selection, now);
    const XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, selection), nullptr));
    if (owner && owner->owner == m_window)
        ownership(selection) = Ownership{std::move(text), now};
    else
        ownership(selection).reset();
}

void X11Selections::giveUp(xcb_atom_t selection)
{
    if (const auto owned = std::exchange(ownership(selection), std::nullopt)) {
        xcb_set_selection_owner(m_connection->xcb(), XCB_WINDOW_NONE, selection, owned->since);
        m_connection->flush();
    }
}

std::optional<QString> X11Selections::read(xcb_atom_t selection)
{
    // We may have lost it a moment ago.
    m_connection->dispatchPending();
    if (const auto &owned = ownership(selection))
        return owned->text ? std::optional(QString::fromUtf8(*owned->text)) : std::nullopt;
    const XcbReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        m_connection->xcb(), xcb_get_selection_owner(m_connection->xcb(), selection), nullptr));
    if (!owner || owner->owner == XCB_WINDOW_NONE)
        return std::nullopt;

    QElapsedTimer time;
    time.start();
    const auto spend = qScopeGuard(
        [&] { m_readingTime += std::chrono::milliseconds(time.elapsed()); });
    const auto rest = longestReading - m_readingTime;
    if (rest <= 0ms)
        return std::nullopt;
    m_lastReading = QDeadlineTimer(rest);
    QDeadlineTimer deadline = patienceDeadline();
    const xcb_atom_t targets[] = {m_atoms.utf8String, m_atoms.textPlainUtf8, XCB_ATOM_STRING};
    for (const xcb_atom_t target : targets) {
        if (const auto content = readAs(selection, target, deadline)) {
            if (const auto text = decoded(*content))
                return text;
        }
        if (deadline.hasExpired())
            break;
    }
    return std::nullopt;
}

std::optional<QString> X11Selections::decoded(const Property &content) const
{
    QByteArray bytes = content.data;
    // Some programs send the terminating zero of C along.
    while (bytes.endsWith('\0'))
        bytes.chop(1);
    // The form that was sent counts; it need not be the one that was asked for.
    if (content.type == XCB_ATOM_STRING)
        return QString::fromLatin1(bytes);
    if (content.type == m_atoms.utf8String || content.type == m_atoms.textPlainUtf8
        || content.type == m_atoms.textPlain)
        return QString::fromUtf8(bytes);
    return std::nullopt;
}

std::optional<X11Selections::Property>
X11Selections::readAs(xcb_atom_t selection, xcb_atom_t target, QDeadlineTimer &deadline)
{
    // A property of its own for each, since a late owner may still write into the last one.
    const QByteArray name = "VELLORO_PASTE_" + QByteArray::number(m_readings++ % 8);
    m_reading = Reading{selection, target, m_connection->atom(name), serverTime()};
    xcb_delete_property(m_connection->xcb(), m_window, m_reading->property);
    xcb_convert_selection(m_connection->xcb(), m_window, selection, target, m_reading->property,
                          m_reading->time);

    std::optional<Property> result;
    const bool answered =
        m_connection->dispatchUntil([this] { return m_reading->answered; }, deadline);
    if (answered && !m_reading->refused) {
        m_reading->pieceArrived = false;
        const Property content = takeProperty(m_reading->property);
        if (content.type == m_atoms.incr)
            result = readPieces(deadline);
        else if (content.type != XCB_ATOM_NONE)
            result = content;
    }
    m_reading.reset();
    return result;
}

QDeadlineTimer X11Selections::patienceDeadline() const
{
    return std::min(QDeadlineTimer(patience), m_lastReading);
}

std::optional<X11Selections::Property> X11Selections::readPieces(QDeadlineTimer &deadline)
{
    Property content;
    for (;;) {
        deadline = patienceDeadline();
        if (!m_connection->dispatchUntil([this] { return m_reading->pieceArrived; }, deadline))
            return std::nullopt;
        m_reading->pieceArrived = false;
        const Property piece = takeProperty(m_reading->property);
        content.type = piece.type;
        content.data += piece.data;
        if (piece.data.isEmpty())
            return content;
    }
}

X11Selections::Property X11Selections::takeProperty(xcb_atom_t name)
{
    constexpr uint32_t everything = 0x1fffffff;
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection->xcb(),
        xcb_get_property(m_connection->xcb(), 1, m_window, name, XCB_GET_PROPERTY_TYPE_ANY, 0,
                         everything),
        nullptr));
    if (!reply)
        return {};
    return {reply->type, QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                                    xcb_get_property_value_length(reply.get()))};
}

void X11Selections::handleEvent(const xcb_generic_event_t *event)
{
    switch (event->response_type & 0x7f) {
    case XCB_SELECTION_REQUEST:
        handleRequest(*reinterpret_cast<const xcb_selection_request_event_t *>(event));
        break;
    case XCB_SELECTION_CLEAR: {
        const auto &clear = *reinterpret_cast<const xcb_selection_clear_event_t *>(event);
        auto &owned = ownership(clear.selection);
        // An old loss says nothing about what was taken since.
        if (owned && (clear.time == XCB_CURRENT_TIME || int32_t(clear.time - owned->since) >= 0)
            && clear.owner == m_window)
            owned.reset();
        break;
    }
    case XCB_SELECTION_NOTIFY: {
        const auto &answer = *reinterpret_cast<const xcb_selection_notify_event_t *>(event);
        // A late answer to an earlier question has its time and its property.
        if (m_reading && answer.selection == m_reading->selection
            && (answer.time == m_reading->time || answer.property == m_reading->property)) {
            m_reading->answered = true;
            m_reading->refused = answer.property == XCB_ATOM_NONE;
        } else if (answer.selection == m_atoms.clipboardManager) {
            m_managerHasSaved = true;
        }
        break;
    }
    case XCB_PROPERTY_NOTIFY:
        handlePropertyChange(*reinterpret_cast<const xcb_property_notify_event_t *>(event));
        break;
    default:
        break;
    }
}

void X11Selections::handlePropertyChange(const xcb_property_notify_event_t &change)
{
    if (change.window == m_window) {
        if (change.atom == m_atoms.clock) {
            m_serverTime = change.time;
            m_serverTimeArrived = true;
        } else if (m_reading && change.atom == m_reading->property
                   && change.state == XCB_PROPERTY_NEW_VALUE) {
            m_reading->pieceArrived = true;
        }
        return;
    }
    if (change.state != XCB_PROPERTY_DELETE)
        return;
    const auto transfer = std::ranges::find_if(m_transfers, [&](const Transfer &candidate) {
        return candidate.requestor == change.window && candidate.property == change.atom;
    });
    if (transfer == m_transfers.end())
        return;

    // The receiver has taken the last piece. An empty one ends the content.
    const qsizetype size = std::min(m_pieceSize, transfer->data.size() - transfer->sent);
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, transfer->requestor,
                        transfer->property, transfer->type, 8, static_cast<uint32_t>(size),
                        transfer->data.constData() + transfer->sent);
    transfer->sent += size;
    transfer->deadline.setRemainingTime(transferPatience);
    if (size == 0)
        m_transfers.erase(transfer);
    m_connection->flush();
}

void X11Selections::dropStaleTransfers()
{
    std::erase_if(m_transfers, [](const Transfer &transfer) { return transfer.deadline.hasExpired(); });
    if (m_transfers.empty())
        m_transferTimeout.stop();
}

void X11Selections::handleRequest(const xcb_selection_request_event_t &request)
{
    const bool isOurs =
        request.selection == m_atoms.clipboard || request.selection == XCB_ATOM_PRIMARY;
    // Old programs name no property and mean the target's name.
    const xcb_atom_t property =
        request.property == XCB_ATOM_NONE ? request.target : request.property;
    const bool isPaste = isPasteUnderWay() && clientOf(request.requestor) == m_paste->client
        && isText(request.target);
    bool done = false;
    if (auto owned = isOurs ? ownership(request.selection) : std::nullopt;
        owned && request.owner == m_window) {
        if (isPaste)
            owned->text = m_paste->text;
        done = request.target == m_atoms.multiple
            ? request.property != XCB_ATOM_NONE
                && convertMultiple(*owned, request.requestor, property)
            : convert(*owned, request.requestor, request.target, property);
        if (isPaste)
            m_paste->served = done;
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
}

bool X11Selections::convert(const Ownership &owned, xcb_window_t requestor, xcb_atom_t target,
                            xcb_atom_t property)
{
    xcb_connection_t *xcb = m_connection->xcb();
    if (target == m_atoms.targets) {
        std::vector<xcb_atom_t> targets = {m_atoms.targets, m_atoms.timestamp, m_atoms.multiple,
                                           m_atoms.saveTargets};
        if (owned.text) {
            targets.insert(targets.end(), {m_atoms.utf8String, m_atoms.textPlainUtf8, m_atoms.text,
                                           m_atoms.textPlain, XCB_ATOM_STRING});
        }
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM, 32,
                            static_cast<uint32_t>(targets.size()), targets.data());
        return true;
    }
    if (target == m_atoms.timestamp) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32, 1,
                            &owned.since);
        return true;
    }
    if (target == m_atoms.saveTargets) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property,
                            m_connection->atom("NULL"), 32, 0, nullptr);
        return true;
    }
    if (!owned.text)
        return false;
    if (target == m_atoms.utf8String || target == m_atoms.textPlainUtf8
        || target == m_atoms.textPlain) {
        send(requestor, property, target, *owned.text);
        return true;
    }
    const bool isAnyText = target == m_atoms.text;
    if (target != XCB_ATOM_STRING && !isAnyText)
        return false;
    const QString text = QString::fromUtf8(*owned.text);
    if (isAnyText && !isLatin1(text))
        send(requestor, property, m_atoms.utf8String, *owned.text);
    else
        send(requestor, property, XCB_ATOM_STRING, text.toLatin1());
    return true;
}

bool X11Selections::convertMultiple(const Ownership &owned, xcb_window_t requestor,
                                    xcb_atom_t property)
{
    constexpr uint32_t most = 256;
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection->xcb(),
        xcb_get_property(m_connection->xcb(), 0, requestor, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                         most),
        nullptr));
    if (!reply || reply->format != 32)
        return false;
    const auto *atoms = static_cast<const xcb_atom_t *>(xcb_get_property_value(reply.get()));
    std::vector<xcb_atom_t> pairs(atoms, atoms + reply->value_len / 2 * 2);
    for (size_t i = 0; i < pairs.size(); i += 2) {
        // What can't be had is marked in the list.
        if (pairs[i] == m_atoms.multiple || pairs[i + 1] == XCB_ATOM_NONE
            || !convert(owned, requestor, pairs[i], pairs[i + 1]))
            pairs[i + 1] = XCB_ATOM_NONE;
    }
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, requestor, property,
                        m_atoms.atomPair, 32, static_cast<uint32_t>(pairs.size()), pairs.data());
    return true;
}

void X11Selections::send(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                         const QByteArray &data)
{
    xcb_connection_t *xcb = m_connection->xcb();
    if (data.size() <= m_pieceSize) {
        xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, type, 8,
                            static_cast<uint32_t>(data.size()), data.constData());
        return;
    }
    // The receiver's deletion of the property asks for each piece.
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(xcb, requestor, XCB_CW_EVENT_MASK, &events);
    const auto size = static_cast<uint32_t>(std::min<qsizetype>(data.size(), INT32_MAX));
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, requestor, property, m_atoms.incr, 32, 1, &size);
    std::erase_if(m_transfers, [&](const Transfer &transfer) {
        return transfer.requestor == requestor && transfer.property == property;
    });
    m_transfers.push_back({requestor, property, type, data, 0, QDeadlineTimer(transferPatience)});
    if (!m_transferTimeout.isActive())
        m_transferTimeout.start();
}

void X11Selections::saveToClipboardManager()
{
    m_connection->dispatchPending();
    if (!m_clipboard || !m_clipboard->text)
        return;
    xcb_connection_t *xcb = m_connection->xcb();
    const XcbReply<xcb_get_selection_owner_reply_t> manager(xcb_get_selection_owner_reply(
        xcb, xcb_get_selection_owner(xcb, m_atoms.clipboardManager), nullptr));
    if (!manager || manager->owner == XCB_WINDOW_NONE)
        return;

    const xcb_atom_t property = m_connection->atom("VELLORO_SAVE");
    const xcb_atom_t targets[] = {m_atoms.utf8String, XCB_ATOM_STRING};
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, m_window, property, XCB_ATOM_ATOM, 32, 2,
                        targets);
    xcb_convert_selection(xcb, m_window, m_atoms.clipboardManager, m_atoms.saveTargets, property,
                          serverTime());
    m_managerHasSaved = false;
    m_connection->dispatchUntil([this] { return m_managerHasSaved; },
                                QDeadlineTimer(longestSaving));
}

} // namespace Velloro
