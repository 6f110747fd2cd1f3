#pragma once

#include "Base/CustomDelete.h"
#include "Platform/DownloadSession.h"
#include "Platform/Linux/Downloads/HttpTransfer.h"

#include <QObject>
#include <chrono>
#include <curl/curl.h>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace Velloro {

/// Downloads over HTTP and HTTPS, with libcurl, on a thread of its own that begins with the first
/// transfer. Nothing but the reports takes the main thread's time.
///
/// Qt's own client would not do: it takes a chunked body that breaks off for a success.
class NetworkDownloadSession : public QObject, public DownloadSession
{
public:
    NetworkDownloadSession(DownloadSessionDelegate &delegate, const QString &temporaryDirectory,
                           HttpTransfer::Patience patience = {});
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
    void reportCompletion(DownloadTaskId task, const PlatformError &error);

    DownloadSessionDelegate &m_delegate;
    const QString m_temporaryDirectory;
    const HttpTransfer::Patience m_patience;

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
