#include "Base/StringLiterals.h"
#include "LocalHttpServer.h"
#include "Platform/Linux/Downloads/NetworkDownloadSession.h"
#include "Support/FileSizeLimit.h"
#include "Support/WaitUntil.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>
#include <sys/file.h>

namespace Velloro {
namespace {

using namespace std::chrono_literals;

QByteArray withLength(const QByteArray &body, qsizetype promised,
                      const QByteArray &status = "200 OK")
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(promised) + "\r\n\r\n"
        + body;
}

QByteArray chunked(const QList<QByteArray> &chunks)
{
    QByteArray response = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (const QByteArray &chunk : chunks)
        response += QByteArray::number(chunk.size(), 16) + "\r\n" + chunk + "\r\n";
    return response;
}

/// Keeps what the session reports, and saves each file as the model store does.
class Receiver : public DownloadSessionDelegate
{
public:
    struct Download
    {
        QList<std::pair<int64_t, int64_t>> progress;
        std::optional<QByteArray> content;
        bool isComplete = false;
        std::optional<PlatformError> error;
    };

    QHash<DownloadTaskId, Download> downloads;
    int completions = 0;
    std::function<void()> onProgress;

    void downloadDidWriteData(DownloadTaskId task, int64_t written, int64_t expected) override
    {
        downloads[task].progress.append({written, expected});
        if (onProgress)
            onProgress();
    }

    void downloadDidFinish(DownloadTaskId task, const QString &location) override
    {
        EXPECT_FALSE(downloads[task].isComplete);
        QFile file(location);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        downloads[task].content = file.readAll();
    }

    void downloadDidComplete(DownloadTaskId task,
                             const std::optional<PlatformError> &error) override
    {
        downloads[task].isComplete = true;
        downloads[task].error = error;
        ++completions;
    }
};

class DownloadSessionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        qunsetenv("http_proxy");
        qunsetenv("all_proxy");
        qunsetenv("ALL_PROXY");
        makeSession();
    }

    void makeSession(HttpTransfer::Patience patience = {30s, 30s})
    {
        receiver.downloads.clear(); // A session counts its tasks from the beginning.
        session = std::make_unique<NetworkDownloadSession>(receiver, directory.path(), patience);
    }

    DownloadTaskId start(const QUrl &url)
    {
        const DownloadTaskId task = session->downloadTask(url);
        session->resume(task);
        return task;
    }

    /// One download to its end.
    Receiver::Download fetch(const QUrl &url)
    {
        const DownloadTaskId task = start(url);
        EXPECT_TRUE(waitUntil([&] { return receiver.downloads[task].isComplete; }, 20s));
        return receiver.downloads[task];
    }

    Receiver::Download fetchResponse(LocalHttpServer::Answer answer)
    {
        server.route(u"/model"_s, std::move(answer));
        return fetch(server.url(u"/model"_s));
    }

    QStringList leftFiles() const
    {
        return QDir(directory.path()).entryList(QDir::Files | QDir::Hidden);
    }

    const QByteArray body = QByteArray(700'000, 'm') + "end";
    QTemporaryDir directory;
    LocalHttpServer server;
    Receiver receiver;
    std::unique_ptr<NetworkDownloadSession> session;
};

TEST_F(DownloadSessionTest, DeliversCompleteBodies)
{
    const struct
    {
        const char *name;
        LocalHttpServer::Answer answer;
        int64_t expected;
    } cases[] = {
        {"with its length", LocalHttpServer::bytes(withLength(body, body.size())), body.size()},
        {"passed on by a proxy",
         LocalHttpServer::bytes(withLength(body, body.size(), "203 Non-Authoritative Information")),
         body.size()},
        {"of unknown length", LocalHttpServer::bytes("HTTP/1.1 200 OK\r\n\r\n" + body), 0},
        {"in chunks", LocalHttpServer::bytes(chunked({body.first(5), body.mid(5), ""})), 0},
        {"connection kept open", LocalHttpServer::bytesThenSilence(withLength(body, body.size())),
         body.size()},
    };
    for (const auto &[name, answer, expected] : cases) {
        SCOPED_TRACE(name);
        const auto download = fetchResponse(answer);
        EXPECT_EQ(download.error, std::nullopt);
        EXPECT_EQ(download.content, body);
        ASSERT_FALSE(download.progress.isEmpty());
        EXPECT_EQ(download.progress.last(), std::pair(int64_t(body.size()), expected));
        EXPECT_TRUE(std::ranges::is_sorted(download.progress));
        EXPECT_EQ(leftFiles(), QStringList());
        EXPECT_TRUE(server.requests.last().startsWith("GET /model HTTP/1.1\r\n"));
        EXPECT_TRUE(server.requests.last().contains("Accept-Encoding: identity\r\n"));
    }
}

TEST_F(DownloadSessionTest, EverythingElseIsAnErrorThatLeavesNothing)
{
    using Server = LocalHttpServer;
    const qsizetype length = body.size();
    const QByteArray zipped
        = "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 3\r\n\r\n"
          "abc";
    const struct
    {
        const char *name;
        Server::Answer answer;
        const char16_t *description;
    } cases[] = {
        {"not found", Server::bytes(withLength(body, length, "404 Not Found")),
         u"The server answered: 404 Not Found"},
        {"server error without a body", Server::bytes(withLength("", 0, "500 Oh No")),
         u"The server answered: 500 Oh No"},
        {"error page without an end",
         Server::bytesThenSilence(withLength(body, 9 * length, "503 X")),
         u"The server answered: 503 X"},
        {"a part only", Server::bytes(withLength(body, length, "206 Partial Content")),
         u"The server answered: 206 Partial Content"},
        {"taken for later", Server::bytes(withLength(body, length, "202 Accepted")),
         u"The server answered: 202 Accepted"},
        {"nothing", Server::bytes("HTTP/1.1 204 No Content\r\n\r\n"),
         u"The server answered: 204 No Content"},
        {"empty", Server::bytes(withLength("", 0)), u"The server sent an empty file"},
        {"empty, of unknown length", Server::bytes("HTTP/1.1 200 OK\r\n\r\n"),
         u"The server sent an empty file"},
        {"redirect to nowhere", Server::bytes(withLength("", 0, "302 Found")),
         u"The server answered: 302 Found"},
        {"short body", Server::bytes(withLength(body.chopped(3), length)),
         u"The connection ended early, after 700 kB of 700 kB"},
        {"no body", Server::bytes(withLength("", length)),
         u"The connection ended early, after 0 bytes of 700 kB"},
        {"length that is none", Server::bytes("HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\nab"),
         nullptr},
        {"encoded", Server::bytes(zipped),
         u"The server sent the file in an encoding that was not asked for: gzip"},
        {"chunks that break off", Server::bytes(chunked({body})), nullptr},
        {"reset at once", Server::bytesThenReset(""), nullptr},
        {"reset on the way", Server::bytesThenReset(withLength(body, 2 * length)), nullptr},
        {"no web server", Server::bytes("220 mail.example ESMTP\r\n"), nullptr},
    };
    for (const auto &[name, answer, description] : cases) {
        SCOPED_TRACE(name);
        const auto download = fetchResponse(answer);
        ASSERT_TRUE(download.error.has_value());
        EXPECT_FALSE(download.content.has_value());
        EXPECT_FALSE(download.error->localizedDescription.isEmpty());
        if (description) {
            EXPECT_EQ(download.error->localizedDescription, QString::fromUtf16(description));
        }
        EXPECT_EQ(leftFiles(), QStringList());
    }
}

TEST_F(DownloadSessionTest, FollowsRedirectsToWhatIsThere)
{
    const auto redirect = [](const QString &location) {
        return LocalHttpServer::bytes("HTTP/1.1 302 Found\r\nContent-Length: 4\r\nLocation: "
                                      + location.toLatin1() + "\r\n\r\nMove");
    };
    LocalHttpServer other;
    other.route(u"/data?sign=a%20b"_s, LocalHttpServer::bytes(withLength(body, body.size())));
    server.route(u"/model"_s, redirect(u"/relative"_s));
    server.route(u"/relative"_s,
                 redirect(other.url(u"/data?sign=a%20b"_s).toString(QUrl::FullyEncoded)));
    EXPECT_EQ(fetch(server.url(u"/model"_s)).content, body);

    server.route(u"/loop"_s, redirect(u"/loop"_s));
    server.route(u"/file"_s, redirect(u"file:///etc/passwd"_s));
    QUrl nothingListens;
    {
        LocalHttpServer gone;
        nothingListens = gone.url(u"/model"_s);
    }
    for (const QUrl &url : {server.url(u"/loop"_s), server.url(u"/file"_s), nothingListens}) {
        const auto download = fetch(url);
        EXPECT_TRUE(download.error.has_value()) << url.toString().toStdString();
        EXPECT_FALSE(download.content.has_value());
    }
}

TEST_F(DownloadSessionTest, StalledConnectionsFail)
{
    const struct
    {
        QByteArray response;
        bool hasBegun;
        const char16_t *description;
    } cases[] = {
        {"", false, u"The server does not answer"},
        {withLength("", 9, "404 Not Found"), false, u"The server answered: 404 Not Found"},
        {withLength("", body.size()), true, u"The server stopped answering"},
        {withLength(body.first(1000), body.size()), true, u"The server stopped answering"},
    };
    for (const auto &[response, hasBegun, description] : cases) {
        makeSession(hasBegun ? HttpTransfer::Patience{1h, 300ms}
                             : HttpTransfer::Patience{300ms, 1h});
        const auto download = fetchResponse(LocalHttpServer::bytesThenSilence(response));
        ASSERT_TRUE(download.error.has_value());
        EXPECT_EQ(download.error->localizedDescription, QString::fromUtf16(description));
        EXPECT_EQ(leftFiles(), QStringList());
    }
}

TEST_F(DownloadSessionTest, DiskThatCannotHoldTheFileIsAnError)
{
    Receiver::Download download;
    {
        const FileSizeLimit fullDisk(100'000);
        download = fetchResponse(LocalHttpServer::bytes(withLength(body, body.size())));
    }

    ASSERT_TRUE(download.error.has_value());
    EXPECT_EQ(download.error->code, EFBIG);
    EXPECT_TRUE(download.error->localizedDescription.startsWith(
        u"The downloaded data could not be saved: "_s));
    EXPECT_EQ(leftFiles(), QStringList());
    // A folder that is not there is no better.
    ASSERT_TRUE(QDir(directory.path()).removeRecursively());
    EXPECT_EQ(fetch(server.url(u"/model"_s)).error->code, ENOENT);
}

TEST_F(DownloadSessionTest, SeveralAtOnceDoNotWaitForEachOther)
{
    server.route(u"/slow"_s,
                 LocalHttpServer::bytesThenSilence(withLength(body.first(9), body.size())));
    const DownloadTaskId slow = start(server.url(u"/slow"_s));
    ASSERT_TRUE(waitUntil([&] { return !receiver.downloads[slow].progress.isEmpty(); }));
    QHash<DownloadTaskId, QByteArray> wanted;
    for (int i = 0; i < 5; ++i) {
        const QString path = u"/%1"_s.arg(i);
        const QByteArray content = QByteArray::number(i).repeated(10'000 * (i + 1));
        server.route(path, LocalHttpServer::bytes(withLength(content, content.size())));
        wanted.insert(start(server.url(path)), content);
    }
    ASSERT_TRUE(waitUntil([&] { return receiver.completions == 5; }));
    for (auto it = wanted.constBegin(); it != wanted.constEnd(); ++it)
        EXPECT_EQ(receiver.downloads[it.key()].content, it.value());
    EXPECT_FALSE(receiver.downloads[slow].isComplete);
}

TEST_F(DownloadSessionTest, ProgressIsReportedAFewTimesASecond)
{
    QPointer<QTcpSocket> connection;
    server.route(u"/model"_s, [&](QTcpSocket &socket) {
        connection = &socket;
        socket.write(withLength("", 2000));
    });
    // One byte a millisecond: reported for each it would be 2000 calls.
    QTimer drip;
    int sent = 0;
    QObject::connect(&drip, &QTimer::timeout, &drip, [&] {
        if (connection && sent < 2000 && connection->write(QByteArray(10, 'd')) == 10) {
            sent += 10;
            connection->flush();
        }
    });
    drip.start(1);
    QElapsedTimer time;
    time.start();
    const auto download = fetch(server.url(u"/model"_s));
    EXPECT_EQ(download.content->size(), 2000);
    EXPECT_EQ(download.progress.last(), std::pair(int64_t(2000), int64_t(2000)));
    EXPECT_LT(download.progress.size(), 10 + time.elapsed() / 50);
}

TEST_F(DownloadSessionTest, EndInTheMiddleLeavesNothingAndReportsNothing)
{
    server.route(u"/model"_s,
                 LocalHttpServer::bytesThenSilence(withLength(body.first(9), body.size())));
    const DownloadTaskId task = start(server.url(u"/model"_s));
    ASSERT_TRUE(waitUntil([&] { return !receiver.downloads[task].progress.isEmpty(); }));
    const QStringList partial = leftFiles();
    ASSERT_EQ(partial.size(), 1);
    EXPECT_TRUE(partial[0].startsWith(u'.'));
    EXPECT_EQ(QFile::permissions(directory.filePath(partial[0]))
                  & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());
    session.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(leftFiles(), QStringList());
    EXPECT_EQ(receiver.completions, 0);
}

TEST_F(DownloadSessionTest, SessionMayEndWithinItsReports)
{
    server.route(u"/model"_s, LocalHttpServer::bytes(withLength(body, body.size())));
    receiver.onProgress = [this] { session.reset(); };
    start(server.url(u"/model"_s));
    ASSERT_TRUE(waitUntil([this] { return !session; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(receiver.completions, 0);
    EXPECT_EQ(leftFiles(), QStringList());
}

TEST_F(DownloadSessionTest, LeftoversOfACrashGoAndNothingElse)
{
    const QStringList names = {u".velloro-download-aBc123.part"_s,
                               u".velloro-download-inUse1.part"_s, u"ggml-tiny.bin"_s,
                               u".hidden"_s};
    for (const QString &name : names)
        ASSERT_TRUE(QFile(directory.filePath(name)).open(QIODevice::WriteOnly));
    QFile inUse(directory.filePath(names[1]));
    ASSERT_TRUE(inUse.open(QIODevice::ReadWrite));
    ASSERT_EQ(flock(inUse.handle(), LOCK_EX), 0);
    makeSession();
    EXPECT_EQ(leftFiles().contains(names[0]), false);
    for (const QString &name : names.mid(1))
        EXPECT_TRUE(leftFiles().contains(name)) << name.toStdString();
}

} // namespace
} // namespace Velloro
