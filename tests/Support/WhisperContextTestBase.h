#pragma once

#include "Base/SerialExecutor.h"
#include "Base/StringLiterals.h"
#include "Core/Recognition/WhisperContext.h"
#include "Support/FakeWhisper.h"
#include "Support/InMemoryProcessInfo.h"
#include "Support/LogRecorder.h"

#include <QEventLoop>
#include <QFile>
#include <QFutureWatcher>
#include <QTemporaryDir>
#include <QTimer>
#include <gmock/gmock.h>

namespace Velloro {

/// A context on the scripted recogniser, its log, and a file that loads as a model.
class WhisperContextTestBase : public ::testing::Test
{
protected:
    WhisperContextTestBase()
    {
        FakeWhisper::reset();
        makeFile(modelPath());
    }

    ~WhisperContextTestBase() override
    {
        FakeWhisper::reset();
        context.reset();
        EXPECT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20)));
        EXPECT_EQ(FakeWhisper::liveStates(), 0);
        EXPECT_EQ(FakeWhisper::liveContexts(), 0);
    }

    [[nodiscard]] QString modelPath() const { return directory.filePath(u"model.bin"_s); }

    static void makeFile(const QString &path, const QByteArray &content = "weights")
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    /// Runs the event loop until the future has finished.
    template <typename T>
    static T await(QFuture<T> future)
    {
        QEventLoop loop;
        QFutureWatcher<T> watcher;
        QObject::connect(&watcher, &QFutureWatcher<T>::finished, &loop, &QEventLoop::quit);
        watcher.setFuture(future);
        QTimer::singleShot(std::chrono::seconds(20), &loop, &QEventLoop::quit);
        if (!future.isFinished())
            loop.exec();
        EXPECT_TRUE(future.isFinished());
        if constexpr (!std::is_void_v<T>)
            return future.result();
    }

    void load() { ASSERT_TRUE(await(context->loadModel(modelPath()))); }

    /// The lines since the last call.
    QStringList takeLines() { return log.take(); }

    static QString line(const char *message)
    {
        return u"[WhisperContext] "_s + QString::fromUtf8(message);
    }

    LogRecorder log;
    QTemporaryDir directory;
    std::shared_ptr<InMemoryProcessInfo> processInfo = std::make_shared<InMemoryProcessInfo>();
    std::unique_ptr<WhisperContext> context = std::make_unique<WhisperContext>(processInfo);
};

} // namespace Velloro
