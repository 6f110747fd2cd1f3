#include "Platform/Linux/Wayland/Clipboard/BorrowedData.h"

#include "Platform/Linux/Wayland/Clipboard/LoopUntil.h"

#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

// The paste waits for it.
constexpr auto patience = 120ms;
constexpr auto longestWait = 500ms;
// A compositor answers within a frame.
constexpr auto compositorPatience = 500ms;

} // namespace

BorrowedData::BorrowedData(WaylandConnection &connection, DataControl &control,
                           DataControl::Selection selection, OfferReader::Forms forms,
                           WhenEmpty whenEmpty)
    : m_connection(connection)
    , m_control(control)
    , m_selection(selection)
    , m_forms(forms)
    , m_whenEmpty(whenEmpty)
{
    connect(&control, &DataControl::changed, this, &BorrowedData::handleChange);
}

void BorrowedData::askCompositor()
{
    m_connection.roundtrip(QDeadlineTimer(compositorPatience));
}

void BorrowedData::follow()
{
    m_isFollowing = true;
    if (!isOwn() && (m_control.offer(m_selection) != m_readOffer || !m_reader))
        startReading();
}

void BorrowedData::unfollow()
{
    m_isFollowing = false;
    if (!m_isBorrowed)
        forgetDisplaced();
}

void BorrowedData::startReading()
{
    forgetDisplaced();
    m_readOffer = m_control.offer(m_selection);
    if (!m_readOffer)
        return;
    m_reader = std::make_unique<OfferReader>(m_readOffer, m_forms);
    connect(m_reader.get(), &OfferReader::finished, this, [this] {
        m_displaced = m_reader->takeContent();
        Q_EMIT read();
    });
}

void BorrowedData::awaitReading()
{
    const QDeadlineTimer end(longestWait);
    while (isReading()) {
        const unsigned before = m_reader->progress();
        const auto hasGoneOn = [&] { return !isReading() || m_reader->progress() != before; };
        if (!loopUntil(hasGoneOn, std::min(QDeadlineTimer(patience), end)))
            return;
    }
}

void BorrowedData::own(MimeContent content)
{
    m_isBorrowed = false;
    forgetDisplaced();
    take(std::move(content));
}

void BorrowedData::borrow(MimeContent content)
{
    askCompositor();
    if (!m_isBorrowed) {
        if (isOwn()) {
            m_displaced = m_content;
        } else {
            // A program that has ended meanwhile can't be asked again.
            const auto current = m_control.offer(m_selection);
            if (current && (current != m_readOffer || !m_reader))
                startReading();
            awaitReading();
            if (isReading())
                m_reader->askForRest();
        }
    }
    m_isBorrowed = true;
    take(std::move(content));
}

bool BorrowedData::holds(const QByteArray &text)
{
    askCompositor();
    if (isOwn())
        return m_isBorrowed;
    const auto current = m_control.offer(m_selection);
    if (!current)
        return false;
    if (current != m_readOffer || !m_reader)
        startReading();
    awaitReading();
    const QByteArray *found = m_displaced ? m_displaced->text() : nullptr;
    const bool isSame = found && *found == text;
    // Nobody would tell when it is out of date.
    if (!m_isFollowing)
        forgetDisplaced();
    return isSame;
}

void BorrowedData::giveBack()
{
    if (!m_isBorrowed || isReading())
        return;
    askCompositor();
    if (!std::exchange(m_isBorrowed, false))
        return;
    const auto displaced = std::exchange(m_displaced, std::nullopt);
    if (displaced && !displaced->forms.empty())
        take(*displaced);
    else if (m_whenEmpty == WhenEmpty::isGivenUp)
        m_source.reset();
    m_connection.flush();
}

void BorrowedData::forgetDisplaced()
{
    m_reader.reset();
    m_readOffer.reset();
    m_displaced.reset();
}

void BorrowedData::take(MimeContent content)
{
    QList<QByteArray> mimeTypes;
    for (const MimeContent::Form &form : content.forms)
        mimeTypes << form.mimeType;
    m_content = std::move(content);
    // The one before ends only now, so that the selection is never empty in between.
    m_source
        = m_control.put(m_selection, mimeTypes,
                        {.send = [this](const QByteArray &mimeType,
                                        FileDescriptor pipe) { send(mimeType, std::move(pipe)); },
                         .cancelled = [this] { lose(); }});
    // Who watches the selection has been told when the compositor answers.
    askCompositor();
}

void BorrowedData::send(const QByteArray &mimeType, FileDescriptor pipe)
{
    const MimeContent::Form *form = m_content.form(mimeType);
    auto *writer = new PipeWriter(std::move(pipe), form ? form->data : QByteArray(), this);
    Q_EMIT fetched(mimeType, writer);
    writer->start();
}

void BorrowedData::handleChange(DataControl::Selection selection)
{
    // The compositor takes a source away before it tells of the next.
    if (selection != m_selection || isOwn())
        return;
    if (!m_control.offer(selection)) {
        // The program has ended; what it has sent counts.
        if (m_reader)
            m_reader->finish();
        return;
    }
    if (m_isFollowing)
        startReading();
}

void BorrowedData::lose()
{
    m_source.reset();
    m_isBorrowed = false;
    forgetDisplaced();
}

} // namespace Velloro
