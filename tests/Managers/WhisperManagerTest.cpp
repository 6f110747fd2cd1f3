#include "Managers/WhisperManager.h"

#include "Base/SerialExecutor.h"
#include "Base/StringLiterals.h"
#include "Support/FakeWhisper.h"
#include "Support/InMemoryPlatform.h"
#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <deque>
#include <gmock/gmock.h>

namespace Velloro {
namespace {

using ::testing::IsEmpty;
using State = ModelDownloadState;

const QString small = u"small-q8_0"_s;
const QString tiny = u"tiny"_s;
const QString baseUrl = u"https://models.example/main/"_s;

class WhisperManagerTest : public ::testing::Test
{
protected:
    using Outcome = std::optional<WhisperManager::LoadResult>;

    WhisperManagerTest()
    {
        FakeWhisper::reset();
        // The recogniser wants real model files: both trees have the same names.
        files->supportDirectory = directory.path();
    }

    ~WhisperManagerTest() override
    {
        FakeWhisper::reset();
        manager.reset();
        EXPECT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20)));
        EXPECT_EQ(FakeWhisper::liveContexts(), 0);
    }

    void makeManager() { manager = std::make_unique<WhisperManager>(memory.platform, baseUrl); }

    QString pathOf(const QString &modelId) const
    {
        return directory.path() + u"/Velloro/Models/ggml-%1.bin"_s.arg(modelId);
    }

    void placeModel(const QString &modelId)
    {
        files->files.insert(pathOf(modelId));
        ASSERT_TRUE(QDir().mkpath(QFileInfo(pathOf(modelId)).path()));
        QFile file(pathOf(modelId));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("weights");
    }

    /// The whole load.
    WhisperManager::LoadResult load(const QString &modelId)
    {
        Outcome outcome;
        startLoad(modelId, outcome);
        EXPECT_TRUE(waitUntil([&] { return outcome.has_value(); }));
        return *outcome;
    }

    QCoro::Task<void> startLoad(QString modelId, Outcome &outcome)
    {
        outcome = co_await manager->loadModel(modelId);
    }

    QStringList takeMessages()
    {
        const QStringList messages = log.messages(u"WhisperManager"_s);
        log.clear();
        return messages;
    }

    /// How often the manager has sent the signal since this call.
    template <typename Signal>
    const int &countOf(Signal signal)
    {
        int &count = m_counts.emplace_back();
        QObject::connect(manager.get(), signal, manager.get(), [&count] { ++count; });
        return count;
    }

    State state(const QString &modelId) const { return manager->modelStates().value(modelId); }

    /// Starts a download and takes its log line.
    DownloadTaskId download(const QString &modelId)
    {
        manager->downloadModel(modelId);
        takeMessages();
        return static_cast<DownloadTaskId>(session->tasks.size());
    }

    /// What a session does at the end of a good download.
    void finish(DownloadTaskId task)
    {
        const QString location = session->temporaryDirectory + u"/partial"_s;
        files->files.insert(location);
        session->delegate.downloadDidFinish(task, location);
        session->delegate.downloadDidComplete(task, std::nullopt);
    }

    LogRecorder log;
    QTemporaryDir directory;
    InMemoryPlatform memory;
    InMemoryFileSystem *files = memory.fileSystem;
    // That of the manager.
    InMemoryDownloadSession *&session = memory.downloadSession;
    std::unique_ptr<WhisperManager> manager;

private:
    std::deque<int> m_counts;
};

TEST_F(WhisperManagerTest, BeginsWithWhatIsThere)
{
    placeModel(tiny);
    makeManager();
    EXPECT_EQ(manager->modelsDirectory(), directory.path() + u"/Velloro/Models"_s);
    EXPECT_TRUE(files->directories.contains(manager->modelsDirectory()));
    EXPECT_EQ(session->temporaryDirectory, manager->modelsDirectory());
    EXPECT_EQ(manager->modelStates().size(), 28);
    for (auto it = manager->modelStates().begin(); it != manager->modelStates().end(); ++it)
        EXPECT_EQ(*it, it.key() == tiny ? State::downloaded() : State::notDownloaded());
    EXPECT_EQ(manager->selectedModelId(), small);
    EXPECT_FALSE(manager->isModelLoaded());
    EXPECT_EQ(manager->whisperContext(), nullptr);

    manager.reset();
    ASSERT_EQ(log.lines().size(), 2);
    const QString tag = log.lines()[0].first(log.lines()[0].size() - 4);
    EXPECT_THAT(tag.toStdString(), ::testing::MatchesRegex("\\[WhisperManager-[0-9A-F]{8}\\] "));
    EXPECT_EQ(log.lines(), QStringList({tag + u"init"_s, tag + u"deinit"_s}));
}

TEST_F(WhisperManagerTest, RescanSeesFilesComeAndGo)
{
    makeManager();
    placeModel(small);
    EXPECT_EQ(state(small), State::notDownloaded());
    const int &writes = countOf(&WhisperManager::modelStatesChanged);
    manager->refreshModelStates();
    EXPECT_EQ(state(small), State::downloaded());
    EXPECT_EQ(writes, 28);

    files->files.clear();
    const DownloadTaskId task = download(tiny);
    session->delegate.downloadDidWriteData(task, 1, 4);
    manager->refreshModelStates();
    EXPECT_EQ(state(small), State::notDownloaded());
    EXPECT_EQ(state(tiny), State::downloading(0.25));
    EXPECT_EQ(manager->modelURL(u"other"_s), pathOf(u"other"_s));
}

TEST_F(WhisperManagerTest, DownloadsAModel)
{
    makeManager();
    QList<double> progress;
    manager->downloadModel(small, [&](double fraction) { progress += fraction; });
    EXPECT_EQ(state(small), State::downloading(0.0));
    ASSERT_EQ(session->tasks.size(), 1);
    EXPECT_EQ(session->tasks[0].url, QUrl(baseUrl + u"ggml-small-q8_0.bin"_s));
    EXPECT_TRUE(session->tasks[0].resumed);
    // A second one while it runs does nothing.
    manager->downloadModel(small);
    EXPECT_EQ(session->tasks.size(), 1);
    EXPECT_EQ(takeMessages(), QStringList({u"Started downloading Small Q8"_s}));

    session->delegate.downloadDidWriteData(1, 50, 100);
    EXPECT_EQ(state(small), State::downloading(0.5));
    // More than the server had told of.
    session->delegate.downloadDidWriteData(1, 101, 100);
    EXPECT_EQ(state(small), State::downloading(1.0));
    finish(1);
    EXPECT_EQ(state(small), State::downloaded());
    EXPECT_TRUE(files->files.contains(pathOf(small)));
    EXPECT_EQ(progress, QList<double>({0.5, 1.0}));
    EXPECT_EQ(takeMessages(),
              QStringList({u"Downloading small-q8_0: 50%"_s, u"Downloading small-q8_0: 100%"_s,
                           u"Successfully saved Small Q8"_s}));

    manager->downloadModel(small);
    EXPECT_EQ(session->tasks.size(), 1);
    manager->downloadModel(u"nonsense"_s);
    EXPECT_EQ(takeMessages(), QStringList({u"Unknown model ID: nonsense"_s}));
    EXPECT_FALSE(manager->modelStates().contains(u"nonsense"_s));
}

TEST_F(WhisperManagerTest, LogsWholeTensOfPercent)
{
    makeManager();
    const DownloadTaskId task = download(small);
    const struct
    {
        int64_t written, expected;
        const char16_t *line;
    } cases[] = {
        {0, 10'000, u"0%"},
        {95, 10'000, u"0%"},
        {100, 10'000, nullptr},
        {999, 10'000, nullptr},
        {1040, 10'000, u"10%"},
        {1040, 10'000, u"10%"},
        {1100, 10'000, nullptr},
        {10'000, 10'000, u"100%"},
        // Sizes that are not known say nothing.
        {10, 0, nullptr},
        {10, -1, nullptr},
    };
    for (const auto &[written, expected, line] : cases) {
        session->delegate.downloadDidWriteData(task, written, expected);
        QStringList lines;
        if (line)
            lines += u"Downloading small-q8_0: "_s + QString::fromUtf16(line);
        EXPECT_EQ(takeMessages(), lines) << written << " of " << expected;
    }
    EXPECT_EQ(state(small), State::downloading(1.0));
}

TEST_F(WhisperManagerTest, FailedTransferCanBeStartedAfresh)
{
    makeManager();
    const PlatformError gone{7, u"Server is gone"_s};
    // Whoever hears of the failure may start again at once.
    int restarts = 0;
    QObject::connect(manager.get(), &WhisperManager::modelStatesChanged, manager.get(), [&] {
        if (state(small) == State::failed(u"Server is gone"_s) && ++restarts == 2)
            manager->downloadModel(small);
    });
    int staleCalls = 0;
    manager->downloadModel(small, [&](double) { ++staleCalls; });
    takeMessages();
    session->delegate.downloadDidComplete(1, gone);
    EXPECT_EQ(state(small), State::failed(u"Server is gone"_s));
    EXPECT_EQ(takeMessages(), QStringList({u"Download failed: Server is gone (code 7)"_s}));

    session->delegate.downloadDidComplete(download(small), gone);
    EXPECT_EQ(state(small), State::downloading(0.0));
    ASSERT_EQ(session->tasks.size(), 3);
    session->delegate.downloadDidWriteData(3, 1, 2);
    EXPECT_EQ(staleCalls, 0);
    finish(3);
    EXPECT_EQ(state(small), State::downloaded());
    // Reports of tasks that are over change nothing.
    session->delegate.downloadDidWriteData(1, 1, 2);
    session->delegate.downloadDidComplete(2, gone);
    EXPECT_EQ(state(small), State::downloaded());
}

TEST_F(WhisperManagerTest, FileThatCannotBeSavedIsAFailure)
{
    makeManager();
    const PlatformError full{28, u"Disk is full"_s};
    files->moveErrors.insert(pathOf(small), full);
    finish(download(small));
    EXPECT_EQ(state(small), State::failed(u"Disk is full"_s));
    EXPECT_EQ(takeMessages(), QStringList({u"Failed to save model: Disk is full (code 28)"_s}));

    // A file that came in the meantime is replaced, or in the way.
    files->moveErrors.clear();
    placeModel(small);
    files->removeErrors.insert(pathOf(small), full);
    finish(download(small));
    EXPECT_EQ(state(small), State::failed(u"Disk is full"_s));
    files->removeErrors.clear();
    finish(download(small));
    EXPECT_EQ(state(small), State::downloaded());
}

TEST_F(WhisperManagerTest, WhatIsNoWholeModelIsNotSaved)
{
    placeModel(tiny);
    makeManager();
    const struct
    {
        QByteArray content;
        QString problem;
    } cases[] = {
        {"weights", u"The server sent something that is not a speech model"_s},
        // Broken off by a server that had not told the length.
        {"lmgg", u"The download is incomplete"_s},
    };
    for (const auto &[content, problem] : cases) {
        QFile file(pathOf(tiny));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        const DownloadTaskId task = download(small);
        session->delegate.downloadDidFinish(task, pathOf(tiny));
        session->delegate.downloadDidComplete(task, std::nullopt);
        EXPECT_EQ(state(small), State::failed(problem));
        EXPECT_FALSE(files->files.contains(pathOf(small)));
        EXPECT_EQ(takeMessages(), QStringList({u"Download failed: "_s + problem}));
    }
}

TEST_F(WhisperManagerTest, DownloadsSeveralModelsAtOnce)
{
    makeManager();
    const DownloadTaskId first = download(small);
    const DownloadTaskId second = download(tiny);
    session->delegate.downloadDidWriteData(first, 1, 4);
    finish(second);
    EXPECT_EQ(state(small), State::downloading(0.25));
    EXPECT_EQ(state(tiny), State::downloaded());
}

TEST_F(WhisperManagerTest, DeletesAModelAndKeepsItLoaded)
{
    placeModel(tiny);
    makeManager();
    ASSERT_TRUE(load(tiny));
    takeMessages();
    const PlatformError refused{13, u"Not allowed"_s};
    files->removeErrors.insert(pathOf(tiny), refused);
    EXPECT_EQ(manager->deleteModel(tiny).error(), refused);
    EXPECT_EQ(state(tiny), State::downloaded());
    EXPECT_THAT(takeMessages(), IsEmpty());

    files->removeErrors.clear();
    EXPECT_TRUE(manager->deleteModel(tiny));
    EXPECT_EQ(state(tiny), State::notDownloaded());
    EXPECT_FALSE(files->files.contains(pathOf(tiny)));
    EXPECT_TRUE(manager->isModelLoaded());
    EXPECT_EQ(takeMessages(), QStringList({u"Deleted model: tiny"_s}));
}

TEST_F(WhisperManagerTest, LoadsAndReplacesModels)
{
    placeModel(tiny);
    placeModel(u"medium"_s);
    makeManager();
    EXPECT_TRUE(manager->isModelDownloaded(WhisperModelType::medium));
    EXPECT_FALSE(manager->isModelDownloaded(WhisperModelType::base));
    const int &selections = countOf(&WhisperManager::selectedModelIdChanged);
    const int &loadedChanges = countOf(&WhisperManager::isModelLoadedChanged);
    ASSERT_TRUE(load(tiny));
    const std::weak_ptr<WhisperContext> first = manager->whisperContext();
    EXPECT_TRUE(manager->isModelLoaded());
    EXPECT_EQ(manager->selectedModelId(), tiny);
    EXPECT_EQ(
        takeMessages(),
        QStringList({u"loadModel requested for tiny"_s,
                     u"unloadModel called. Context exists: false"_s, u"Loaded model: Tiny"_s}));

    Outcome outcome;
    const auto byType = [](WhisperManager &manager, Outcome &result) -> QCoro::Task<void> {
        result = co_await manager.loadModel(WhisperModelType::medium);
    };
    {
        const FakeWhisper::Hold hold(FakeWhisper::Point::load);
        byType(*manager, outcome);
        EXPECT_FALSE(manager->isModelLoaded());
    }
    ASSERT_TRUE(waitUntil([&] { return outcome.has_value(); }));
    EXPECT_TRUE(outcome->has_value());
    EXPECT_EQ(manager->selectedModelId(), u"medium"_s);
    EXPECT_EQ(selections, 2);
    EXPECT_EQ(loadedChanges, 3);
    EXPECT_EQ(FakeWhisper::loads().back().path, pathOf(u"medium"_s));
    // The first model's memory goes without being asked for again.
    EXPECT_TRUE(first.expired());
    EXPECT_TRUE(waitUntil([] { return FakeWhisper::liveContexts() == 1; }));
}

TEST_F(WhisperManagerTest, RefusedLoadsKeepTheLoadedModel)
{
    placeModel(tiny);
    makeManager();
    ASSERT_TRUE(load(tiny));
    const auto context = manager->whisperContext();
    takeMessages();
    for (const QString &modelId : {u"nonsense"_s, small}) {
        EXPECT_EQ(load(modelId).error(), ModelLoadError(WhisperError::modelNotFound));
        EXPECT_EQ(takeMessages(), QStringList({u"loadModel requested for "_s + modelId}));
    }
    EXPECT_EQ(manager->whisperContext(), context);
    EXPECT_TRUE(manager->isModelLoaded());
    EXPECT_EQ(manager->selectedModelId(), tiny);
}

TEST_F(WhisperManagerTest, FileThatIsNoModelLeavesNoneLoaded)
{
    placeModel(tiny);
    placeModel(small);
    makeManager();
    ASSERT_TRUE(load(tiny));
    const auto old = manager->whisperContext();
    FakeWhisper::setLoadScript([this](const QString &path) { return path != pathOf(small); });
    EXPECT_EQ(load(small).error(), ModelLoadError(WhisperContextError::modelLoadFailed));
    EXPECT_FALSE(manager->isModelLoaded());
    EXPECT_EQ(manager->selectedModelId(), tiny);
    EXPECT_NE(manager->whisperContext(), nullptr);
    EXPECT_NE(manager->whisperContext(), old);
    EXPECT_TRUE(load(tiny));
}

TEST_F(WhisperManagerTest, OfTwoLoadsThatOverlapTheLaterCounts)
{
    placeModel(tiny);
    placeModel(small);
    makeManager();
    Outcome first, second;
    {
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        startLoad(tiny, first);
        ASSERT_TRUE(hold.waitUntilHeld());
        startLoad(small, second);
        hold.letOneThrough();
        // Whichever of the two it is: only the later one may count as loaded.
        ASSERT_TRUE(waitUntil([&] { return first.has_value() || second.has_value(); }));
        EXPECT_EQ(manager->isModelLoaded(), second.has_value());
    }
    ASSERT_TRUE(waitUntil([&] { return first.has_value() && second.has_value(); }));
    EXPECT_EQ(first->error(), ModelLoadError(WhisperError::modelNotLoaded));
    EXPECT_TRUE(second->has_value());
    EXPECT_TRUE(manager->isModelLoaded());
    EXPECT_EQ(manager->selectedModelId(), small);
    EXPECT_FALSE(takeMessages().contains(u"Loaded model: Tiny"_s));
    EXPECT_TRUE(waitUntil([] { return FakeWhisper::liveContexts() == 1; }));
}

TEST_F(WhisperManagerTest, LoadsOfTheSameModelAreOne)
{
    placeModel(tiny);
    placeModel(small);
    makeManager();
    for (const bool succeeds : {false, true}) {
        FakeWhisper::setLoadScript([succeeds](const QString &) { return succeeds; });
        Outcome first, second;
        {
            FakeWhisper::Hold hold(FakeWhisper::Point::load);
            startLoad(tiny, first);
            ASSERT_TRUE(hold.waitUntilHeld());
            startLoad(tiny, second);
        }
        ASSERT_TRUE(waitUntil([&] { return first.has_value() && second.has_value(); }));
        EXPECT_EQ(first->has_value(), succeeds);
        EXPECT_EQ(second->has_value(), succeeds);
        if (!succeeds) {
            EXPECT_EQ(second->error(), ModelLoadError(WhisperContextError::modelLoadFailed));
        }
    }
    EXPECT_EQ(FakeWhisper::loads().size(), 2U);
    const QString requested = u"loadModel requested for tiny"_s;
    EXPECT_EQ(takeMessages(),
              QStringList({requested, u"unloadModel called. Context exists: false"_s, requested,
                           requested, u"unloadModel called. Context exists: true"_s, requested,
                           u"Loaded model: Tiny"_s}));

    // There and back again, by another model or by none: the first call has what it asked for in
    // the end.
    for (const bool unloads : {false, true}) {
        Outcome first, second, third;
        {
            FakeWhisper::Hold hold(FakeWhisper::Point::load);
            startLoad(tiny, first);
            ASSERT_TRUE(hold.waitUntilHeld());
            if (unloads)
                manager->unloadModel();
            else
                startLoad(small, second);
            EXPECT_EQ(manager->loadingModelId(), unloads ? QString() : small);
            startLoad(tiny, third);
        }
        ASSERT_TRUE(waitUntil([&] { return first && (unloads || second) && third; }));
        EXPECT_TRUE(first->has_value());
        EXPECT_TRUE(third->has_value());
        EXPECT_EQ(manager->selectedModelId(), tiny);
        EXPECT_TRUE(manager->isModelLoaded());
        if (second) {
            EXPECT_EQ(second->error(), ModelLoadError(WhisperError::modelNotLoaded));
        }
    }
}

TEST_F(WhisperManagerTest, UnloadOrEndDuringALoadLeavesNothingLoaded)
{
    placeModel(tiny);
    makeManager();
    Outcome outcome;
    for (const bool destroys : {false, true}) {
        outcome.reset();
        {
            FakeWhisper::Hold hold(FakeWhisper::Point::load);
            startLoad(tiny, outcome);
            ASSERT_TRUE(hold.waitUntilHeld());
            if (destroys)
                manager.reset();
            else
                manager->unloadModel();
        }
        ASSERT_TRUE(waitUntil([&] { return outcome.has_value(); }));
        EXPECT_EQ(outcome->error(), ModelLoadError(WhisperError::modelNotLoaded));
        if (manager) {
            EXPECT_FALSE(manager->isModelLoaded());
        }
        EXPECT_TRUE(waitUntil([] { return FakeWhisper::liveContexts() == 0; }));
    }
}

TEST_F(WhisperManagerTest, WaitsForWhateverLoadIsUnderWay)
{
    placeModel(tiny);
    placeModel(small);
    makeManager();
    std::optional<std::optional<WhisperManager::LoadResult>> awaited;
    const auto wait = [&]() -> QCoro::Task<void> { awaited = co_await manager->finishLoading(); };
    wait();
    EXPECT_TRUE(awaited && !*awaited) << "none was";
    Outcome first, second;
    {
        FakeWhisper::Hold hold(FakeWhisper::Point::load);
        startLoad(tiny, first);
        awaited.reset();
        wait();
        // Its file has been read, but before anybody hears of that another one takes its place.
        hold.letOneThrough();
        ASSERT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20)));
        startLoad(small, second);
        ASSERT_TRUE(waitUntil([&] { return first.has_value(); }));
        QCoreApplication::processEvents();
        EXPECT_FALSE(awaited);
    }
    ASSERT_TRUE(waitUntil([&] { return awaited && second; }));
    EXPECT_TRUE(*awaited && **awaited);
    EXPECT_EQ(manager->selectedModelId(), small);
    EXPECT_EQ(manager->loadingModelId(), QString());
}

TEST_F(WhisperManagerTest, StreamsInTheLanguageThatIsAskedFor)
{
    placeModel(tiny);
    makeManager();
    ASSERT_TRUE(load(tiny));
    // More of them may come after the end of the test.
    const auto segments = std::make_shared<int>(0);
    manager->startStreaming(u"pl"_s, [segments](const TranscriptionSegment &) { ++*segments; });
    // The start is a job of its own behind the language.
    ASSERT_TRUE(waitUntil([&] {
        manager->whisperContext()->addAudioSamples(std::vector<float>(24'000));
        return *segments > 0;
    }));
    EXPECT_EQ(FakeWhisper::calls().front().language, "pl");
}

TEST_F(WhisperManagerTest, UnloadsInTheBackground)
{
    placeModel(tiny);
    makeManager();
    const int &loadedChanges = countOf(&WhisperManager::isModelLoadedChanged);
    manager->unloadModel();
    EXPECT_EQ(takeMessages(), QStringList({u"unloadModel called. Context exists: false"_s}));
    EXPECT_EQ(loadedChanges, 0);

    ASSERT_TRUE(load(tiny));
    takeMessages();
    manager->unloadModel();
    EXPECT_EQ(manager->whisperContext(), nullptr);
    EXPECT_FALSE(manager->isModelLoaded());
    EXPECT_EQ(manager->selectedModelId(), tiny);
    EXPECT_EQ(loadedChanges, 2);
    EXPECT_TRUE(waitUntil([] { return FakeWhisper::liveContexts() == 0; }));
    ASSERT_TRUE(waitUntil([this] { return log.lines().size() >= 2; }));
    EXPECT_EQ(log.lines().first(2),
              QStringList({u"[WhisperManager] unloadModel called. Context exists: true"_s,
                           u"[WhisperContext] Model unloaded. Stack trace:"_s}));
}

TEST_F(WhisperManagerTest, WithoutAFolderNothingIsKept)
{
    files->supportDirectory.reset();
    makeManager();
    EXPECT_EQ(takeMessages().size(), 1);
    EXPECT_TRUE(manager->modelsDirectory().isEmpty());
    EXPECT_EQ(state(tiny), State::notDownloaded());
    manager->downloadModel(tiny);
    EXPECT_TRUE(std::holds_alternative<State::Failed>(state(tiny).value));
    EXPECT_EQ(load(tiny).error(), ModelLoadError(WhisperError::modelNotFound));
    EXPECT_TRUE(manager->deleteModel(tiny));
}

} // namespace
} // namespace Velloro
