// The model manager over the real download session and the real file system.

#include "LocalHttpServer.h"
#include "Managers/WhisperManager.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/Linux/NetworkDownloadSession.h"
#include "Support/InMemoryProcessInfo.h"
#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace Velloro {
namespace {

const QString tiny = QStringLiteral("tiny");

class ModelDownloadTest : public ::testing::Test
{
protected:
    ModelDownloadTest()
    {
        qunsetenv("http_proxy");
        qputenv("XDG_DATA_HOME", directory.path().toUtf8());
        platform.fileSystem = std::make_unique<LinuxFileSystem>();
        platform.processInfo = std::make_unique<InMemoryProcessInfo>();
        platform.makeDownloadSession = [](DownloadSessionDelegate &delegate,
                                          const QString &temporaryDirectory) {
            return std::make_unique<NetworkDownloadSession>(delegate, temporaryDirectory);
        };
        manager = std::make_unique<WhisperManager>(
            platform, server.url(QStringLiteral("/main/")).toString());
    }

    ~ModelDownloadTest() override { qunsetenv("XDG_DATA_HOME"); }

    /// Answers with this many bytes where `promised` are promised.
    void serve(qsizetype sent, qsizetype promised, bool closes, const QByteArray &begin = "lmgg")
    {
        const QByteArray response = "HTTP/1.1 200 OK\r\nContent-Length: "
            + QByteArray::number(promised) + "\r\n\r\n" + QByteArray(sent, 'w').replace(0, begin.size(), begin);
        server.route(QStringLiteral("/main/ggml-tiny.bin"),
                     closes ? LocalHttpServer::bytes(response)
                            : LocalHttpServer::bytesThenSilence(response));
    }

    ModelDownloadState state() const { return manager->modelStates().value(tiny); }

    bool isDownloading() const
    {
        return std::holds_alternative<ModelDownloadState::Downloading>(state().value);
    }

    QStringList files() const
    {
        return QDir(directory.filePath(QStringLiteral("Velloro/Models")))
            .entryList(QDir::Files | QDir::Hidden);
    }

    LogRecorder log;
    QTemporaryDir directory;
    LocalHttpServer server;
    Platform platform;
    std::unique_ptr<WhisperManager> manager;
};

TEST_F(ModelDownloadTest, OnlyAWholeFileGetsTheModelsName)
{
    serve(70'000, 90'000, true);
    manager->downloadModel(tiny);
    ASSERT_TRUE(waitUntil([this] { return !isDownloading(); }));
    EXPECT_EQ(state(), ModelDownloadState::failed(
                           QStringLiteral("The connection ended after 70000 of 90000 bytes")));
    EXPECT_EQ(files(), QStringList());

    serve(90'000, 90'000, true, "<html>");
    manager->downloadModel(tiny);
    ASSERT_TRUE(waitUntil([this] { return !isDownloading(); }));
    EXPECT_EQ(state(), ModelDownloadState::failed(QStringLiteral(
                           "The server sent something that is not a speech model")));
    EXPECT_EQ(files(), QStringList());

    serve(90'000, 90'000, true);
    manager->downloadModel(tiny);
    ASSERT_TRUE(waitUntil([this] { return !isDownloading(); }));
    EXPECT_EQ(state(), ModelDownloadState::downloaded());
    EXPECT_EQ(files(), QStringList({QStringLiteral("ggml-tiny.bin")}));
    EXPECT_EQ(QFileInfo(manager->modelURL(tiny)).size(), 90'000);
}

TEST_F(ModelDownloadTest, QuitInTheMiddleLeavesNothing)
{
    serve(10'000, 90'000, false);
    manager->downloadModel(tiny);
    ASSERT_TRUE(waitUntil([this] { return state() != ModelDownloadState::downloading(0); }));
    EXPECT_TRUE(isDownloading());
    EXPECT_EQ(files().size(), 1);
    EXPECT_FALSE(files().contains(QStringLiteral("ggml-tiny.bin")));
    manager.reset();
    EXPECT_EQ(files(), QStringList());
}

} // namespace
} // namespace Velloro
