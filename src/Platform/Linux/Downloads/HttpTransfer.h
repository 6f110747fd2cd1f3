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
/// The library checks lengths and statuses of errors; besides, the status has to be 200 or 203 and
/// the body neither empty nor encoded. One thread.
class HttpTransfer
{
public:
    using Outcome = tl::expected<std::unique_ptr<PartialFile>, PlatformError>;
    /// Bytes received, and expected (0 when that is not known). Called a few times a second, and
    /// with the last byte.
    using ProgressHandler = std::function<void(int64_t written, int64_t expected)>;
    /// How long a server may be silent before the transfer fails.
    struct Patience
    {
        /// Until the file begins.
        std::chrono::milliseconds answer = std::chrono::seconds(20);
        /// In the middle of it.
        std::chrono::milliseconds stall = std::chrono::seconds(60);
    };

    HttpTransfer(const QUrl &url, std::unique_ptr<PartialFile> file, Patience patience,
                 ProgressHandler onProgress);
    HttpTransfer(const HttpTransfer &) = delete;
    HttpTransfer &operator=(const HttpTransfer &) = delete;

    /// For the loop that drives it; owned by the transfer. The loop has to turn several times in
    /// the time of its patience.
    [[nodiscard]] CURL *handle() const { return m_handle.get(); }
    /// The result after the library ended with `code`; the transfer is of no use afterwards.
    [[nodiscard]] Outcome finish(CURLcode code);

private:
    using Clock = std::chrono::steady_clock;

    template <typename T>
    void setOption(CURLoption option, T value);
    [[nodiscard]] PlatformError failure(CURLcode code) const;
    /// What is wrong with a response that the library takes for whole.
    [[nodiscard]] std::optional<PlatformError> fault() const;
    [[nodiscard]] int64_t expectedSize() const;
    /// Whether the transfer may go on.
    [[nodiscard]] bool update();
    void reportProgress();

    static size_t onHeader(const char *data, size_t size, size_t count, void *self);
    static size_t onBody(const char *data, size_t size, size_t count, void *self);
    static int onProgress(void *self, curl_off_t, curl_off_t, curl_off_t, curl_off_t);

    std::unique_ptr<PartialFile> m_file;
    Patience m_patience;
    ProgressHandler m_onProgress;
    std::unique_ptr<curl_slist, CustomDelete<curl_slist_free_all>> m_requestHeaders;
    std::array<char, CURL_ERROR_SIZE> m_libraryError{};
    Clock::time_point m_lastActivity = Clock::now();
    std::optional<Clock::time_point> m_lastReport;
    int64_t m_reportedSize = 0;
    /// Of the latest response of a chain of redirects: "404 Not Found".
    QString m_status;
    std::optional<PlatformError> m_error;
    std::unique_ptr<CURL, CustomDelete<curl_easy_cleanup>> m_handle;
};

} // namespace Velloro
