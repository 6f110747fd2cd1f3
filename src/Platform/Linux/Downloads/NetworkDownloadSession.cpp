#include "Platform/Linux/Downloads/NetworkDownloadSession.h"

#include <QPointer>
#include <algorithm>
#include <csignal>
#include <utility>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

void initializeLibrary()
{
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    Q_UNUSED(result);
}

} // namespace

struct NetworkDownloadSession::Running
{
    DownloadTaskId task = 0;
    std::unique_ptr<HttpTransfer> transfer;
};

NetworkDownloadSession::NetworkDownloadSession(DownloadSessionDelegate &delegate,
                                               const QString &temporaryDirectory,
                                               HttpTransfer::Patience patience)
    : m_delegate(delegate)
    , m_temporaryDirectory(temporaryDirectory)
    , m_patience(patience)
{
    initializeLibrary();
    m_multi.reset(curl_multi_init());
    PartialFile::removeStale(m_temporaryDirectory);
}

NetworkDownloadSession::~NetworkDownloadSession()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    curl_multi_wakeup(m_multi.get());
    m_thread.join();
}

DownloadTaskId NetworkDownloadSession::downloadTask(const QUrl &url)
{
    m_suspended.push_back({++m_lastTask, url});
    return m_lastTask;
}

void NetworkDownloadSession::resume(DownloadTaskId task)
{
    const auto request = std::ranges::find(m_suspended, task, &Request::task);
    if (request == m_suspended.end())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(std::move(*request));
    }
    m_suspended.erase(request);
    if (m_thread.joinable())
        curl_multi_wakeup(m_multi.get());
    else
        m_thread = std::thread(&NetworkDownloadSession::run, this);
}

void NetworkDownloadSession::run()
{
    // Signals are the main thread's affair; a broken pipe is nobody's.
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);

    std::vector<Running> transfers;
    const auto withHandle = [&transfers](CURL *handle) {
        return std::ranges::find_if(transfers, [handle](const Running &running) {
            return running.transfer->handle() == handle;
        });
    };
    while (true) {
        std::vector<Request> requests;
        {
            const std::lock_guard lock(m_mutex);
            if (m_isEnding)
                break;
            requests.swap(m_requests);
        }
        for (const Request &request : requests)
            begin(request, transfers);

        int runningCount = 0;
        curl_multi_perform(m_multi.get(), &runningCount);
        int waitingCount = 0;
        while (const CURLMsg *message = curl_multi_info_read(m_multi.get(), &waitingCount)) {
            if (message->msg != CURLMSG_DONE)
                continue;
            const auto running = withHandle(message->easy_handle);
            end(*running, message->data.result);
            transfers.erase(running);
        }

        const auto limit = transfers.empty()
            ? std::chrono::milliseconds(1h)
            : std::min<std::chrono::milliseconds>(
                  {500ms, m_patience.answer / 2, m_patience.stall / 2});
        curl_multi_poll(m_multi.get(), nullptr, 0, static_cast<int>(limit.count()), nullptr);
    }
    for (const Running &running : transfers)
        curl_multi_remove_handle(m_multi.get(), running.transfer->handle());
}

void NetworkDownloadSession::begin(const Request &request, std::vector<Running> &transfers)
{
    auto file = PartialFile::create(m_temporaryDirectory);
    if (!file) {
        reportCompletion(request.task, file.error());
        return;
    }
    auto onProgress = [this, task = request.task](int64_t written, int64_t expected) {
        QMetaObject::invokeMethod(
            this,
            [this, task, written, expected] {
                m_delegate.downloadDidWriteData(task, written, expected);
            },
            Qt::QueuedConnection);
    };
    auto transfer = std::make_unique<HttpTransfer>(request.url, std::move(*file), m_patience,
                                                   std::move(onProgress));
    curl_multi_add_handle(m_multi.get(), transfer->handle());
    transfers.push_back({request.task, std::move(transfer)});
}

void NetworkDownloadSession::end(Running &running, CURLcode code)
{
    curl_multi_remove_handle(m_multi.get(), running.transfer->handle());
    auto outcome = running.transfer->finish(code);
    // The partial file of a failure is removed before the failure is reported.
    running.transfer.reset();
    if (!outcome) {
        reportCompletion(running.task, outcome.error());
        return;
    }
    // Shared, because a call that waits has to be copyable. The file goes with the call, also when
    // the session ends before.
    std::shared_ptr<PartialFile> file = std::move(*outcome);
    QMetaObject::invokeMethod(
        this,
        [this, task = running.task, file = std::move(file)]() mutable {
            const QPointer<NetworkDownloadSession> self = this;
            m_delegate.downloadDidFinish(task, file->path());
            file.reset();
            if (self)
                m_delegate.downloadDidComplete(task, std::nullopt);
        },
        Qt::QueuedConnection);
}

void NetworkDownloadSession::reportCompletion(DownloadTaskId task, const PlatformError &error)
{
    QMetaObject::invokeMethod(
        this, [this, task, error] { m_delegate.downloadDidComplete(task, error); },
        Qt::QueuedConnection);
}

} // namespace Velloro
