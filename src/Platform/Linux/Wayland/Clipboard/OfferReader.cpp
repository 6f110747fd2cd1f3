#include "Platform/Linux/Wayland/Clipboard/OfferReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 10s;
constexpr auto longestReading = 60s;
constexpr qsizetype largestContent = 64 * 1024 * 1024;

/// Whether the form is of the content: no action, and nothing about the ownership.
bool isContent(const QByteArray &mimeType)
{
    // Toolkits name these because X11 has them.
    constexpr const char *others[] = {"TARGETS",        "TIMESTAMP", "MULTIPLE",
                                      "SAVE_TARGETS",   "DELETE",    "INSERT_SELECTION",
                                      "INSERT_PROPERTY"};
    return std::ranges::none_of(others, [&](const char *each) { return mimeType == each; });
}

} // namespace

OfferReader::OfferReader(std::shared_ptr<DataOffer> offer, Forms forms)
    : m_offer(std::move(offer))
    , m_end(longestReading)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, &OfferReader::finish);
    m_patience.start();
    for (const QByteArray &mimeType : m_offer->mimeTypes()) {
        const bool isWanted = forms == Forms::text ? MimeContent::isText(mimeType)
                                                   : isContent(mimeType);
        if (isWanted && std::ranges::find(m_wanted, mimeType) == m_wanted.end())
            m_wanted.push_back(mimeType);
    }
    std::ranges::stable_partition(m_wanted, &MimeContent::isText);
    // Later, so that everybody can listen to what comes of it.
    QMetaObject::invokeMethod(this, &OfferReader::askForNext, Qt::QueuedConnection);
}

MimeContent OfferReader::takeContent()
{
    const QList<QByteArray> order = m_offer->mimeTypes();
    std::ranges::stable_sort(m_content.forms, {}, [&](const MimeContent::Form &form) {
        return order.indexOf(form.mimeType);
    });
    return std::move(m_content);
}

void OfferReader::askForRest()
{
    for (const QByteArray &mimeType : std::exchange(m_wanted, {}))
        ask(mimeType);
}

void OfferReader::finish()
{
    if (std::exchange(m_isFinished, true))
        return;
    m_patience.stop();
    m_transfers.clear();
    Q_EMIT finished();
}

void OfferReader::ask(const QByteArray &mimeType)
{
    int ends[2];
    if (m_isFinished || pipe2(ends, O_CLOEXEC) != 0)
        return;
    // The end that the owner is given stays as it is: it need not know that it could not wait.
    FileDescriptor pipe(ends[0]);
    const FileDescriptor ownersEnd(ends[1]);
    fcntl(pipe.get(), F_SETFL, O_NONBLOCK);
    m_offer->receive(mimeType, ownersEnd.get());

    const int descriptor = pipe.get();
    auto &transfer = *m_transfers.emplace_back(
        new Transfer{{mimeType, {}}, std::move(pipe), {descriptor, QSocketNotifier::Read}, false});
    connect(&transfer.notifier, &QSocketNotifier::activated, this,
            [this, &transfer] { readFrom(transfer); });
}

void OfferReader::askForNext()
{
    if (!m_transfers.empty())
        return;
    if (m_wanted.empty() || m_end.hasExpired()) {
        finish();
        return;
    }
    const QByteArray next = m_wanted.front();
    m_wanted.pop_front();
    ask(next);
    // No pipe could be made.
    if (m_transfers.empty())
        askForNext();
}

void OfferReader::readFrom(Transfer &transfer)
{
    std::array<char, 64 * 1024> block;
    const ssize_t size = read(transfer.pipe.get(), block.data(), block.size());
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    ++m_progress;
    m_patience.start();
    if (size > 0)
        take(transfer, block.data(), size);
    if (m_end.hasExpired())
        finish();
    else if (size <= 0)
        complete(transfer);
}

void OfferReader::take(Transfer &transfer, const char *data, qsizetype size)
{
    // The rest of what is too large is taken, too: the owner waits for that.
    if (transfer.isLeftOut)
        return;
    if (m_size + size > largestContent) {
        transfer.isLeftOut = true;
        m_size -= transfer.form.data.size();
        transfer.form.data.clear();
        return;
    }
    m_size += size;
    transfer.form.data.append(data, size);
}

void OfferReader::complete(Transfer &transfer)
{
    if (!transfer.isLeftOut)
        m_content.forms.push_back(std::move(transfer.form));
    std::erase_if(m_transfers, [&](const auto &each) { return each.get() == &transfer; });
    askForNext();
}

} // namespace Velloro
