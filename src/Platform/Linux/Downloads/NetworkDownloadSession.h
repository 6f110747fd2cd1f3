#pragma once

#include "Base/CustomDelete.h"
#include "Platform/DownloadSession.h"

#include <QObject>
#include <chrono>
#include <curl/curl.h>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Velloro {

class HttpTransfer;

/// Downloads over HTTP and HTTPS, with libcurl, on a thread of its own that begins with the first
/// transfer. Nothing but the reports takes the main thread's time.
///
/// Qt's own client would not do: it takes a body that goes on beyond the promised length, and a
/// chunked one that breaks off, for a success.
class NetworkDownloadSession : public QObject, public DownloadSession
{
public:
    /// A transfer fails when no server begins to send the file for `answerTimeout`, and when
    /// nothing more of it arrives for `stallTimeout`.
    NetworkDownloadSession(DownloadSessionDelegate &delegate, const QString &temporaryDirectory,
                           std::chrono::milliseconds answerTimeout = std::chrono::seconds(20),
                           std::chrono::milliseconds stallTimeout = std::chrono::seconds(60));
    /// Waits for the thread, which may have to finish a write to the disk.
    ~NetworkDownloadSession() override;

    [[nodiscard]] DownloadTaskId downloadTask(const QUrl &url) override;
    void resume(DownloadTaskId task) override;

private:
    struct Request
    {
        DownloadTaskId task = 0;
        QUrl url;
    };
    struct Running;

    // On the session's thread.
    void run();
    void begin(const Request &request, std::vector<Running> &transfers);
    void end(Running &running, CURLcode code);
    /// How long a transfer may be silent in the state in which it is.
    [[nodiscard]] std::chrono::milliseconds patienceWith(const HttpTransfer &transfer) const;
    void reportCompletion(DownloadTaskId task, const PlatformError &error);

    DownloadSessionDelegate &m_delegate;
    const QString m_temporaryDirectory;
    const std::chrono::milliseconds m_answerTimeout;
    const std::chrono::milliseconds m_stallTimeout;

    // Main thread.
    DownloadTaskId m_lastTask = 0;
    std::vector<Request> m_suspended;

    std::mutex m_mutex;
    std::vector<Request> m_requests; ///< Under the mutex.
    bool m_isEnding = false;         ///< Under the mutex.

    std::unique_ptr<CURLM, CustomDelete<curl_multi_cleanup>> m_multi;
    std::thread m_thread;
};

} // namespace Velloro
