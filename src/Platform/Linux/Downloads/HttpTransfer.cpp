#include "Platform/Linux/Downloads/HttpTransfer.h"

#include "Base/StringLiterals.h"

#include <QLocale>
#include <algorithm>

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

} // namespace

HttpTransfer::HttpTransfer(const QUrl &url, std::unique_ptr<PartialFile> file, Patience patience,
                           ProgressHandler onProgress)
    : m_file(std::move(file))
    , m_patience(patience)
    , m_onProgress(std::move(onProgress))
    , m_requestHeaders(curl_slist_append(nullptr, "Accept-Encoding: identity"))
    , m_handle(curl_easy_init())
{
    setOption(CURLOPT_URL, url.toEncoded().constData());
    // Whoever starts out encrypted stays so.
    const char *protocols = url.scheme() == u"https" ? "https" : "http,https";
    setOption(CURLOPT_PROTOCOLS_STR, protocols);
    setOption(CURLOPT_REDIR_PROTOCOLS_STR, protocols);
    setOption(CURLOPT_FOLLOWLOCATION, 1L);
    setOption(CURLOPT_MAXREDIRS, redirectLimit);
    setOption(CURLOPT_FAILONERROR, 1L);
    setOption(CURLOPT_HTTPHEADER, m_requestHeaders.get());
    setOption(CURLOPT_USERAGENT, "Velloro");
    setOption(CURLOPT_NOSIGNAL, 1L);
    // Name look-ups that hang must not hold up the end of the program.
    setOption(CURLOPT_QUICK_EXIT, 1L);
    setOption(CURLOPT_ERRORBUFFER, m_libraryError.data());
    setOption(CURLOPT_HEADERFUNCTION, &HttpTransfer::onHeader);
    setOption(CURLOPT_HEADERDATA, static_cast<void *>(this));
    setOption(CURLOPT_WRITEFUNCTION, &HttpTransfer::onBody);
    setOption(CURLOPT_WRITEDATA, static_cast<void *>(this));
    setOption(CURLOPT_NOPROGRESS, 0L);
    setOption(CURLOPT_XFERINFOFUNCTION, &HttpTransfer::onProgress);
    setOption(CURLOPT_XFERINFODATA, static_cast<void *>(this));
}

template <typename T>
void HttpTransfer::setOption(CURLoption option, T value)
{
    curl_easy_setopt(m_handle.get(), option, value);
}

int64_t HttpTransfer::expectedSize() const
{
    curl_off_t size = 0;
    curl_easy_getinfo(m_handle.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
    return std::max<int64_t>(size, 0);
}

HttpTransfer::Outcome HttpTransfer::finish(CURLcode code)
{
    if (m_error)
        return tl::unexpected(*m_error);
    if (code != CURLE_OK)
        return tl::unexpected(failure(code));
    if (const auto error = fault())
        return tl::unexpected(*error);
    if (const auto synchronized = m_file->synchronize(); !synchronized)
        return tl::unexpected(synchronized.error());
    reportProgress();
    return std::move(m_file);
}

PlatformError HttpTransfer::failure(CURLcode code) const
{
    if (code == CURLE_HTTP_RETURNED_ERROR)
        return {code, u"The server answered: "_s + m_status};
    if (code == CURLE_PARTIAL_FILE && expectedSize() > 0) {
        return {code,
                u"The connection ended early, after %1 of %2"_s.arg(sizeText(m_file->size()),
                                                                    sizeText(expectedSize()))};
    }
    const char *reason = m_libraryError[0] ? m_libraryError.data() : curl_easy_strerror(code);
    return {code, QString::fromLocal8Bit(reason)};
}

std::optional<PlatformError> HttpTransfer::fault() const
{
    long status = 0;
    curl_easy_getinfo(m_handle.get(), CURLINFO_RESPONSE_CODE, &status);
    // 203 is the file as a proxy passed it on; the other successes are not the whole file.
    if (status != 200 && status != 203)
        return PlatformError{int(status), u"The server answered: "_s + m_status};
    curl_header *encoding = nullptr;
    if (curl_easy_header(m_handle.get(), "Content-Encoding", 0, CURLH_HEADER, -1, &encoding)
            == CURLHE_OK
        && qstricmp(encoding->value, "identity") != 0) {
        return PlatformError{0,
                             u"The server sent the file in an encoding that was "
                             "not asked for: "_s
                                 + QString::fromLatin1(encoding->value)};
    }
    if (m_file->size() == 0)
        return PlatformError{0, u"The server sent an empty file"_s};
    return std::nullopt;
}

bool HttpTransfer::update()
{
    if (m_reportedSize != m_file->size()
        && (!m_lastReport || Clock::now() - *m_lastReport >= reportInterval))
        reportProgress();
    const bool hasBegun = m_file->size() > 0 || m_status.startsWith(u"20");
    if (Clock::now() - m_lastActivity < (hasBegun ? m_patience.stall : m_patience.answer))
        return true;
    m_error = {CURLE_OPERATION_TIMEDOUT,
               hasBegun ? u"The server stopped answering"_s : u"The server does not answer"_s};
    return false;
}

void HttpTransfer::reportProgress()
{
    m_lastReport = Clock::now();
    m_reportedSize = m_file->size();
    m_onProgress(m_file->size(), expectedSize());
}

size_t HttpTransfer::onHeader(const char *data, size_t size, size_t count, void *self)
{
    auto *transfer = static_cast<HttpTransfer *>(self);
    transfer->m_lastActivity = Clock::now();
    const QString line = QString::fromLatin1(data, qsizetype(size * count)).trimmed();
    if (line.startsWith(u"HTTP/"))
        transfer->m_status = line.section(u' ', 1);
    return size * count;
}

size_t HttpTransfer::onBody(const char *data, size_t size, size_t count, void *self)
{
    auto *transfer = static_cast<HttpTransfer *>(self);
    const auto written = transfer->m_file->append({data, size * count});
    // Taken after the write, which may have waited for the disk.
    transfer->m_lastActivity = Clock::now();
    if (!written)
        transfer->m_error = written.error();
    return written ? size * count : 0;
}

int HttpTransfer::onProgress(void *self, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    return static_cast<HttpTransfer *>(self)->update() ? 0 : 1;
}

} // namespace Velloro
