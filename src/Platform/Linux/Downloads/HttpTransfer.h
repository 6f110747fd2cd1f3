#pragma once

#include "Base/CustomDelete.h"
#include "Platform/Linux/Downloads/PartialFile.h"

#include <QUrl>
#include <array>
#include <chrono>
#include <curl/curl.h>
#include <functional>
#include <memory>
#include <optional>

namespace Velloro {

/// One file on its way from a web server into a partial file.
///
/// It is stricter than the library below it: the body has to be exactly as long as the server
/// promised and not empty, the status 200 or 203, the content not encoded. One thread.
class HttpTransfer
{
public:
    using Clock = std::chrono::steady_clock;
    using Outcome = tl::expected<std::unique_ptr<PartialFile>, PlatformError>;
    /// Bytes received, and expected (-1 when that is not known). Called a few times a second, and
    /// with the last byte.
    using ProgressHandler = std::function<void(int64_t written, int64_t expected)>;

    HttpTransfer(const QUrl &url, std::unique_ptr<PartialFile> file, ProgressHandler onProgress);
    HttpTransfer(const HttpTransfer &) = delete;
    HttpTransfer &operator=(const HttpTransfer &) = delete;

    /// For the loop that drives it; owned by the transfer.
    [[nodiscard]] CURL *handle() const { return m_handle.get(); }
    /// Whether a server has begun to send the file.
    [[nodiscard]] bool hasBegun() const { return isSuccess(); }
    /// How long nothing has been received.
    [[nodiscard]] Clock::duration silence() const { return Clock::now() - m_lastActivity; }
    /// Whether all that was promised is there, whatever the connection does then.
    [[nodiscard]] bool isComplete() const;

    /// Reports what came since the last report, when that is long enough ago: what follows may be
    /// long in coming.
    void reportProgressIfDue();
    /// The result after the library ended with `code`; the transfer is of no use afterwards.
    [[nodiscard]] Outcome finish(CURLcode code);

private:
    template <typename T>
    void setOption(CURLoption option, T value);
    [[nodiscard]] bool isSuccess() const;
    void headerLine(QByteArray line);
    [[nodiscard]] bool bodyData(std::span<const char> bytes);
    [[nodiscard]] bool fail(PlatformError error);
    void reportProgress();

    static size_t onHeader(const char *data, size_t size, size_t count, void *self);
    static size_t onBody(const char *data, size_t size, size_t count, void *self);

    std::unique_ptr<PartialFile> m_file;
    ProgressHandler m_onProgress;
    std::unique_ptr<curl_slist, CustomDelete<curl_slist_free_all>> m_requestHeaders;
    std::array<char, CURL_ERROR_SIZE> m_libraryError{};
    Clock::time_point m_lastActivity = Clock::now();
    std::optional<Clock::time_point> m_lastReport;
    int64_t m_reportedSize = 0;

    // What the latest response of a chain of redirects says of itself.
    QByteArray m_statusText;
    int m_status = 0;
    int64_t m_promised = -1;
    bool m_isChunked = false;

    std::optional<PlatformError> m_error;
    std::unique_ptr<CURL, CustomDelete<curl_easy_cleanup>> m_handle;
};

} // namespace Velloro
