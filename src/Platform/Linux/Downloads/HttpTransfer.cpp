#include "Platform/Linux/Downloads/HttpTransfer.h"

#include <QLocale>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

constexpr auto reportInterval = 100ms;
constexpr long redirectLimit = 10;

/// "75 MB", "1.5 GB"; in the manner of the error texts, whatever the user's locale is.
QString sizeText(int64_t bytes)
{
    constexpr int64_t gigabyte = 1'000'000'000;
    return QLocale::c().formattedDataSize(bytes, bytes < gigabyte ? 0 : 1,
                                          QLocale::DataSizeSIFormat);
}

PlatformError lengthError(int64_t received, int64_t promised)
{
    return {0, QStringLiteral("The connection ended early, after %1 of %2")
                   .arg(sizeText(received), sizeText(promised))};
}

} // namespace

HttpTransfer::HttpTransfer(const QUrl &url, std::unique_ptr<PartialFile> file,
                           ProgressHandler onProgress)
    : m_file(std::move(file))
    , m_onProgress(std::move(onProgress))
    , m_requestHeaders(curl_slist_append(nullptr, "Accept-Encoding: identity"))
    , m_handle(curl_easy_init())
{
    curl_slist_append(m_requestHeaders.get(), "Connection: close");
    setOption(CURLOPT_URL, url.toEncoded().constData());
    // Whoever starts out encrypted stays so.
    const char *protocols = url.scheme() == u"https" ? "https" : "http,https";
    setOption(CURLOPT_PROTOCOLS_STR, protocols);
    setOption(CURLOPT_REDIR_PROTOCOLS_STR, protocols);
    setOption(CURLOPT_FOLLOWLOCATION, 1L);
    setOption(CURLOPT_MAXREDIRS, redirectLimit);
    setOption(CURLOPT_HTTPHEADER, m_requestHeaders.get());
    setOption(CURLOPT_USERAGENT, "Velloro");
    // The library would cut a body at the promised length without a word. So it reads until the
    // connection is closed, and the lengths are compared here.
    setOption(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    setOption(CURLOPT_IGNORE_CONTENT_LENGTH, 1L);
    setOption(CURLOPT_NOSIGNAL, 1L);
    // Name look-ups that hang must not hold up the end of the program.
    setOption(CURLOPT_QUICK_EXIT, 1L);
    setOption(CURLOPT_ERRORBUFFER, m_libraryError.data());
    setOption(CURLOPT_HEADERFUNCTION, &HttpTransfer::onHeader);
    setOption(CURLOPT_HEADERDATA, static_cast<void *>(this));
    setOption(CURLOPT_WRITEFUNCTION, &HttpTransfer::onBody);
    setOption(CURLOPT_WRITEDATA, static_cast<void *>(this));
    setOption(CURLOPT_PRIVATE, static_cast<void *>(this));
}

template <typename T>
void HttpTransfer::setOption(CURLoption option, T value)
{
    curl_easy_setopt(m_handle.get(), option, value);
}

bool HttpTransfer::isSuccess() const
{
    // 203 is the file as a proxy passed it on; the other successes are not the whole file.
    return m_status == 200 || m_status == 203;
}

bool HttpTransfer::isComplete() const
{
    return !m_error && isSuccess() && m_promised >= 0 && !m_isChunked
        && m_file->size() == m_promised;
}

HttpTransfer::Outcome HttpTransfer::finish(CURLcode code)
{
    if (m_error)
        return tl::unexpected(*m_error);
    const bool isOverdue = code == CURLE_OPERATION_TIMEDOUT;
    constexpr int firstErrorStatus = 400;
    // The body of an error page was refused, which the library takes for a failed write.
    if (!isSuccess()
        && (code == CURLE_OK || code == CURLE_WRITE_ERROR
            || (isOverdue && m_status >= firstErrorStatus))) {
        return tl::unexpected(PlatformError{
            m_status, QStringLiteral("The server answered: ") + QString::fromLatin1(m_statusText)});
    }
    if (isOverdue && !isComplete()) {
        return tl::unexpected(PlatformError{
            code, hasBegun() ? QStringLiteral("The server stopped answering")
                             : QStringLiteral("The server does not answer")});
    }
    if (code != CURLE_OK && !isComplete()) {
        if (m_promised >= 0 && m_file->size() > 0)
            return tl::unexpected(lengthError(m_file->size(), m_promised));
        const char *reason = m_libraryError[0] ? m_libraryError.data() : curl_easy_strerror(code);
        return tl::unexpected(PlatformError{code, QString::fromLocal8Bit(reason)});
    }
    if (m_promised >= 0 && m_file->size() != m_promised)
        return tl::unexpected(lengthError(m_file->size(), m_promised));
    if (m_file->size() == 0)
        return tl::unexpected(PlatformError{0, QStringLiteral("The server sent an empty file")});
    if (const auto synchronized = m_file->synchronize(); !synchronized)
        return tl::unexpected(synchronized.error());
    reportProgress();
    return std::move(m_file);
}

void HttpTransfer::headerLine(QByteArray line)
{
    line = line.trimmed();
    if (line.startsWith("HTTP/")) {
        m_statusText = line.mid(line.indexOf(' ') + 1);
        m_status = m_statusText.left(3).toInt();
        m_promised = -1;
        m_isChunked = false;
        return;
    }
    const qsizetype colon = line.indexOf(':');
    const QByteArray name = line.left(colon).toLower();
    const QByteArray value = line.mid(colon + 1).trimmed().toLower();
    if (name == "content-length") {
        bool isNumber = false;
        const int64_t length = value.toLongLong(&isNumber);
        if (!isNumber || length < 0 || (m_promised >= 0 && m_promised != length)) {
            (void)fail({0, QStringLiteral("The server's answer makes no sense: ")
                               + QString::fromLatin1(line)});
        }
        m_promised = length;
    } else if (name == "transfer-encoding") {
        m_isChunked = value.contains("chunked");
    } else if (name == "content-encoding" && value != "identity" && isSuccess()) {
        (void)fail({0, QStringLiteral("The server sent the file in an encoding that was not asked "
                                      "for: ")
                           + QString::fromLatin1(value)});
    }
}

bool HttpTransfer::bodyData(std::span<const char> bytes)
{
    if (!isSuccess())
        return false; // What an error page says is of no interest.
    if (m_promised >= 0 && m_file->size() + static_cast<int64_t>(bytes.size()) > m_promised) {
        return fail({0, QStringLiteral("The server sent more than the %1 that it promised")
                            .arg(sizeText(m_promised))});
    }
    if (const auto written = m_file->append(bytes); !written)
        return fail(written.error());
    reportProgressIfDue();
    return true;
}

void HttpTransfer::reportProgressIfDue()
{
    if (m_reportedSize != m_file->size()
        && (!m_lastReport || Clock::now() - *m_lastReport >= reportInterval))
        reportProgress();
}

bool HttpTransfer::fail(PlatformError error)
{
    if (!m_error)
        m_error = std::move(error);
    return false;
}

void HttpTransfer::reportProgress()
{
    m_lastReport = Clock::now();
    m_reportedSize = m_file->size();
    m_onProgress(m_file->size(), m_promised);
}

size_t HttpTransfer::onHeader(const char *data, size_t size, size_t count, void *self)
{
    auto *transfer = static_cast<HttpTransfer *>(self);
    transfer->m_lastActivity = Clock::now();
    transfer->headerLine(QByteArray(data, static_cast<qsizetype>(size * count)));
    return transfer->m_error ? 0 : size * count;
}

size_t HttpTransfer::onBody(const char *data, size_t size, size_t count, void *self)
{
    auto *transfer = static_cast<HttpTransfer *>(self);
    const bool taken = transfer->bodyData({data, size * count});
    // Taken after the write, which may have waited for the disk.
    transfer->m_lastActivity = Clock::now();
    return taken ? size * count : 0;
}

} // namespace Velloro
