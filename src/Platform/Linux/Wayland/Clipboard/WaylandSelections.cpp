#include "Platform/Linux/Wayland/Clipboard/WaylandSelections.h"

#include "Platform/Linux/Wayland/Clipboard/LoopUntil.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto pastePatience = 1s;
// An application may fetch the text twice, or in two forms, and still be about it.
constexpr auto pauseAfterFetch = 50ms;
// Who watches the clipboard asks within a few milliseconds.
constexpr auto noticePatience = 20ms;
constexpr auto longestNotice = 100ms;

} // namespace

std::unique_ptr<WaylandSelections>
WaylandSelections::make(std::shared_ptr<WaylandConnection> connection)
{
    if (!connection)
        return nullptr;
    auto control = DataControl::make(*connection);
    if (!control)
        return nullptr;
    return std::unique_ptr<WaylandSelections>(
        new WaylandSelections(std::move(connection), std::move(control)));
}

WaylandSelections::WaylandSelections(std::shared_ptr<WaylandConnection> connection,
                                     std::unique_ptr<DataControl> control)
    : m_connection(std::move(connection))
    , m_control(std::move(control))
    , m_clipboard(*m_connection, *m_control, DataControl::Selection::clipboard,
                  OfferReader::Forms::all, BorrowedData::WhenEmpty::keepsText)
    , m_primary(*m_connection, *m_control, DataControl::Selection::primary,
                OfferReader::Forms::text, BorrowedData::WhenEmpty::isGivenUp)
{
    for (const BorrowedData *each : {&m_clipboard, &m_primary}) {
        connect(each, &BorrowedData::fetched, this,
                [this](const QByteArray &mimeType, PipeWriter *writer) {
                    handleFetch(mimeType, *writer);
                });
        // Later: giving back waits for the compositor, and these come from the midst of its events.
        connect(each, &BorrowedData::read, this, &WaylandSelections::continueGivingBack,
                Qt::QueuedConnection);
    }
    connect(this, &WaylandSelections::pasteServed, this, &WaylandSelections::continueGivingBack,
            Qt::QueuedConnection);
    m_pasteEnd.setSingleShot(true);
    connect(&m_pasteEnd, &QTimer::timeout, this, &WaylandSelections::continueGivingBack);
}

WaylandSelections::~WaylandSelections()
{
    if (!m_clipboard.isBorrowed() && !m_primary.isBorrowed())
        return;
    m_clipboard.giveBack();
    m_primary.giveBack();
    awaitNotice();
}

void WaylandSelections::setString(const QString &text)
{
    m_text.reset();
    m_clipboard.own(MimeContent::ofText(text));
}

void WaylandSelections::follow()
{
    m_clipboard.follow();
    m_primary.follow();
}

void WaylandSelections::unfollow()
{
    m_clipboard.unfollow();
    m_primary.unfollow();
}

void WaylandSelections::borrow(const QString &text)
{
    m_isGivingBack = false;
    // An application that is late would be given this text for the one before.
    awaitPaste();
    m_paste.reset();
    m_text = text;
    m_isPrimaryLent = false;
    m_clipboard.borrow(MimeContent::ofPassingText(text));
    awaitNotice();
}

void WaylandSelections::awaitNotice()
{
    // A clipboard manager asks as soon as it knows. What is fetched after the stroke should be the
    // application's doing, so the stroke waits until nobody asks any more.
    const QDeadlineTimer end(longestNotice);
    unsigned before = 0;
    do {
        before = m_requests;
    } while (loopUntil([&] { return m_requests != before; },
                       std::min(QDeadlineTimer(noticePatience), end)));
}

void WaylandSelections::lendToPrimarySelection()
{
    if (!m_text)
        return;
    m_isPrimaryLent = true;
    m_primary.borrow(MimeContent::ofPassingText(*m_text));
}

void WaylandSelections::giveBack()
{
    m_text.reset();
    m_isGivingBack = true;
    m_connection->dispatchPending();
    continueGivingBack();
}

void WaylandSelections::continueGivingBack()
{
    if (!m_isGivingBack)
        return;
    if (m_paste && !m_paste->end.hasExpired()) {
        m_pasteEnd.start(static_cast<int>(m_paste->end.remainingTime()) + 1);
        return;
    }
    m_clipboard.giveBack();
    m_primary.giveBack();
    // What is still being read comes back when it has been.
    m_isGivingBack = m_clipboard.isBorrowed() || m_primary.isBorrowed();
}

bool WaylandSelections::beginPaste(const PasteTarget &target)
{
    if (!m_connection->isAlive() || !m_text)
        return true;
    if (!holdsText()) {
        takeTextAgain();
        if (!holdsText())
            return false;
    }
    // Who has taken the text over does not tell when it is fetched.
    m_paste.reset();
    if (m_clipboard.isOwn())
        m_paste = {QDeadlineTimer(pastePatience), target.isOwn, false};
    return true;
}

bool WaylandSelections::holdsText()
{
    const QByteArray text = m_text->toUtf8();
    return m_clipboard.holds(text) && (!m_isPrimaryLent || m_primary.holds(text));
}

void WaylandSelections::takeTextAgain()
{
    const MimeContent content = MimeContent::ofPassingText(*m_text);
    m_clipboard.borrow(content);
    if (m_isPrimaryLent)
        m_primary.borrow(content);
    awaitNotice();
}

bool WaylandSelections::awaitPaste()
{
    if (!m_paste)
        return false;
    if (!m_paste->isOwn) {
        loopUntil([this] { return m_paste->served || !m_connection->isAlive(); }, m_paste->end);
    }
    return m_paste->served;
}

bool WaylandSelections::isPasteUnderWay() const
{
    return m_paste && !m_paste->served && !m_paste->end.hasExpired();
}

void WaylandSelections::handleFetch(const QByteArray &mimeType, PipeWriter &writer)
{
    ++m_requests;
    if (!isPasteUnderWay() || !MimeContent::isText(mimeType))
        return;
    connect(&writer, &PipeWriter::finished, this, [this] {
        if (!isPasteUnderWay())
            return;
        m_paste->served = true;
        m_paste->end.setRemainingTime(pauseAfterFetch);
        Q_EMIT pasteServed();
    });
}

} // namespace Velloro
