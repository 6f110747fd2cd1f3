#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"
#include "Support/WhisperContextTestBase.h"

#include <unistd.h>

namespace Velloro {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WhisperContextTest : public WhisperContextTestBase
{
};

TEST_F(WhisperContextTest, LoadsWithFlashAttentionAndSilencesTheLibrary)
{
    load();

    EXPECT_THAT(takeLines(), ElementsAre(line("Model loaded: ") + modelPath()));
    EXPECT_TRUE(FakeWhisper::isLogSilenced());
    ASSERT_EQ(FakeWhisper::loads().size(), 1U);
    EXPECT_EQ(FakeWhisper::loads().front().path, modelPath());
    EXPECT_TRUE(FakeWhisper::loads().front().flashAttention);
    EXPECT_TRUE(FakeWhisper::loads().front().othersUntouched);
    EXPECT_EQ(FakeWhisper::liveContexts(), 1);
    EXPECT_EQ(FakeWhisper::liveStates(), 1);
}

TEST_F(WhisperContextTest, AMissingFileLeavesTheLoadedModelUsable)
{
    load();
    takeLines();

    EXPECT_EQ(await(context->loadModel(directory.filePath(u"none.bin"_s))),
              tl::unexpected(WhisperContextError::modelNotFound));
    EXPECT_THAT(takeLines(), IsEmpty());
    EXPECT_EQ(await(context->transcribe({0.5F})), u"Hello world.");
}

TEST_F(WhisperContextTest, LoadingAgainUnloadsFirstAndLogsTheStack)
{
    processInfo->stack.clear();
    for (int frame = 0; frame < 12; ++frame)
        processInfo->stack += u"frame %1"_s.arg(frame);
    load();
    takeLines();

    load();

    QStringList expected = {line("Model unloaded. Stack trace:")};
    for (int frame = 0; frame < 10; ++frame)
        expected += line("frame ") + QString::number(frame);
    expected += line("Model loaded: ") + modelPath();
    EXPECT_EQ(takeLines(), expected);
    EXPECT_EQ(FakeWhisper::liveContexts(), 1);
}

TEST_F(WhisperContextTest, ARefusedFileLeavesNoModel)
{
    load();
    takeLines();
    FakeWhisper::setLoadScript([](const QString &) { return false; });

    EXPECT_EQ(await(context->loadModel(modelPath())),
              tl::unexpected(WhisperContextError::modelLoadFailed));
    EXPECT_EQ(FakeWhisper::liveContexts(), 0);
    EXPECT_THAT(takeLines(),
                ElementsAre(line("Model unloaded. Stack trace:"), line("0 inner"), line("1 outer"),
                            line("Couldn't load model at ") + modelPath()));
    EXPECT_EQ(await(context->transcribe({0.5F})), tl::unexpected(WhisperContextError::notReady));
    EXPECT_THAT(takeLines(), ElementsAre(line("Cannot transcribe: model not loaded")));
}

TEST_F(WhisperContextTest, AFailedDecodingStateFreesTheModelWithoutAWord)
{
    for (const auto outcome :
         {FakeWhisper::StateCreation::fails, FakeWhisper::StateCreation::throws}) {
        FakeWhisper::setStateCreation(outcome);
        EXPECT_EQ(await(context->loadModel(modelPath())),
                  tl::unexpected(WhisperContextError::modelLoadFailed));
        EXPECT_EQ(FakeWhisper::liveContexts(), 0);
        EXPECT_THAT(takeLines(), IsEmpty());
    }
}

/// A model file of the least size, and where its parts end.
struct SmallModel
{
    static constexpr int filterBands = 80;
    static constexpr int filterBins = 201;
    /// Behind the format's mark: vocabulary; positions, width, heads and layers of the audio and of
    /// the text half; mel bands; how the matrices are stored (q5_1).
    std::vector<uint32_t> header = {51864, 1500, 384, 6, 1, 448, 384, 6, 1, filterBands, 2009};
    uint32_t bins = filterBins;
    uint32_t words = 2;
    /// What header and layers make necessary.
    int tensors = 11 + 15 + 24;
    uint32_t matrixType = 7;
    qsizetype filtersStart = 0;
    qsizetype filtersEnd = 0;

    QByteArray bytes()
    {
        QByteArray bytes;
        const auto number = [&bytes](uint32_t value) {
            bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
        };
        number(0x67676d6c);
        for (const uint32_t field : header)
            number(field);
        number(filterBands);
        number(bins);
        filtersStart = bytes.size();
        bytes.append(filterBands * filterBins * 4, '\1');
        filtersEnd = bytes.size();
        number(words);
        for (uint32_t word = 0; word < words; ++word) {
            number(word % 2);
            bytes.append(word % 2, 'a');
        }
        for (int tensor = 0; tensor < tensors; ++tensor) {
            const bool isMatrix = tensor == 0;
            for (const uint32_t field :
                 {2U, 4U, isMatrix ? matrixType : 0U, isMatrix ? 32U : 1U, 1U})
                number(field);
            bytes += "name";
            bytes.append(isMatrix ? 24 : 4, '\2');
        }
        return bytes;
    }
};

TEST_F(WhisperContextTest, ADamagedModelNeverReachesTheLibrary)
{
    SmallModel model;
    const QByteArray whole = model.bytes();
    makeFile(modelPath(), whole);
    EXPECT_TRUE(await(context->loadModel(modelPath())));

    QFile file(modelPath());
    for (qsizetype size = whole.size() - 1; size >= 4; --size) {
        if (size > model.filtersStart + 4 && size < model.filtersEnd - 4)
            continue;
        ASSERT_TRUE(file.resize(size));
        ASSERT_EQ(await(context->loadModel(modelPath())),
                  tl::unexpected(WhisperContextError::modelLoadFailed))
            << size;
    }
    QByteArray noise = whole.first(4);
    for (int index = 0; index < 1000; ++index)
        noise += static_cast<char>(index * 7 + index / 3);
    for (const QByteArray &content : {noise, whole + "x", whole.first(4) + whole}) {
        makeFile(modelPath(), content);
        EXPECT_FALSE(await(context->loadModel(modelPath())));
    }
    EXPECT_EQ(FakeWhisper::loads().size(), 1U);
}

TEST_F(WhisperContextTest, AModelThatContradictsItselfNeverReachesTheLibrary)
{
    const auto expectRefused = [this](SmallModel model, const char *what) {
        makeFile(modelPath(), model.bytes());
        EXPECT_FALSE(await(context->loadModel(modelPath()))) << what;
    };
    const std::vector<uint32_t> wrong[] = {
        {0, 51863, 60'000}, {0, 1499, 3000}, {0, 383, 512}, {0, 5, 7, 8}, {0, 2, 1U << 31},
        {0, 447, 1500},     {0, 385, 512},   {0, 5, 12},    {0, 2},       {0, 79, 128},
        {5, 8, 1008, 2040},
    };
    for (size_t field = 0; field < std::size(wrong); ++field) {
        for (const uint32_t value : wrong[field]) {
            SmallModel model;
            model.header[field] = value;
            expectRefused(model, qPrintable(u"field %1: %2"_s.arg(field).arg(value)));
        }
    }
    expectRefused({.bins = 200}, "frequency bins");
    expectRefused({.words = 51865}, "more words than the vocabulary has");
    expectRefused({.matrixType = 6}, "stored in another way than the header says");
    expectRefused({.tensors = 51}, "a tensor too many");
    EXPECT_THAT(FakeWhisper::loads(), IsEmpty());
}

TEST_F(WhisperContextTest, ThreadsFollowTheProcessorCores)
{
    for (const auto &[cores, threads] : std::initializer_list<std::pair<int, int>>{
             {1, 1}, {2, 1}, {3, 1}, {4, 2}, {9, 7}, {10, 8}, {12, 8}, {64, 8}}) {
        processInfo->cores = cores;
        context = std::make_unique<WhisperContext>(processInfo);
        load();
        await(context->transcribe({0.5F}));
        EXPECT_EQ(FakeWhisper::calls().back().threads, threads) << cores << " cores";
    }
}

TEST_F(WhisperContextTest, HandsTheRecordingAndTheSettingsToTheLibrary)
{
    load();
    await(context->transcribe({0.25F, -1.0F, 0.5F}));
    takeLines();
    await(context->setLanguage(u"auto"_s));
    await(context->setCustomDictionary({u"Kubernetes"_s, u"Größe"_s}));
    EXPECT_THAT(
        takeLines(),
        ElementsAre(line("Language set to: auto"), line("Custom dictionary set with 2 words")));
    load(); // They outlive the model.
    takeLines();
    await(context->transcribe({0.5F}));

    const auto calls = FakeWhisper::calls();
    ASSERT_EQ(calls.size(), 2U);
    for (const FakeWhisper::Call &call : calls) {
        EXPECT_TRUE(call.greedy);
        EXPECT_TRUE(call.noContext);
        EXPECT_TRUE(call.quiet);
        EXPECT_TRUE(call.othersUntouched);
        EXPECT_TRUE(call.timingsReset);
    }
    EXPECT_THAT(calls[0].samples, ElementsAre(0.25F, -1.0F, 0.5F));
    EXPECT_EQ(calls[0].language, "en");
    EXPECT_EQ(calls[0].prompt, std::nullopt);
    EXPECT_EQ(calls[1].language, "auto");
    EXPECT_EQ(calls[1].prompt, QByteArray("Kubernetes, Größe"));
    EXPECT_THAT(takeLines(),
                ElementsAre(line("Transcribing 1 samples in batch..."),
                            line("Batch transcription complete: 'Hello world....'")));
}

TEST_F(WhisperContextTest, AShortRecordingIsFollowedBySilence)
{
    // The library reads more than it is told of; here that would be something else.
    std::vector<float> samples(300, 9.0F);
    samples.resize(3);
    load();
    await(context->transcribe(std::move(samples)));
    std::vector<float> expected(201, 0.0F);
    std::fill_n(expected.begin(), 3, 9.0F);
    EXPECT_EQ(FakeWhisper::calls().at(0).samplesRead, expected);
    EXPECT_EQ(FakeWhisper::calls().at(0).samples.size(), 3U);
}

TEST_F(WhisperContextTest, OfAnEndlessPromptTheEndIsUsed)
{
    const QString endless(13'000, u'語');
    const QString sentence = u"längere Wörter "_s.repeated(1000);
    const struct
    {
        QStringList words;
        QString end;
    } cases[] = {
        {{endless}, QString(1333, u'語')},
        {{endless, u"Größe"_s}, u"Größe"_s},
        {{sentence + u"Ende"_s}, u"längere Wörter "_s.repeated(235) + u"Ende"_s},
    };
    load();
    for (const auto &[words, end] : cases) {
        await(context->setCustomDictionary(words));
        await(context->transcribe({0.5F}));
        EXPECT_EQ(QString::fromUtf8(FakeWhisper::calls().back().prompt.value_or(QByteArray())),
                  end);
    }
}

TEST_F(WhisperContextTest, CollectsAndTrimsTheText)
{
    struct Case
    {
        QList<std::optional<QByteArray>> segments;
        const char *text;
        const char *logged;
    };
    const QByteArray family = "👨‍👩‍👧";
    const QByteArray longText = family.repeated(49) + "xyz";
    const QByteArray longPrefix = family.repeated(49) + "x";
    const std::vector<Case> cases = {
        {{" Hello there.", " How are you?"},
         "Hello there. How are you?",
         "Hello there. How are you?"},
        {{std::nullopt, " a", std::nullopt, "b"}, "ab", "ab"},
        {{}, "", ""},
        {{" \u00a0\n", "\t\u2029 twelve chars\r\n\u3000"}, "twelve chars", "twelve chars"},
        // A character in two halves, and a byte that is none.
        {{" caf\xc3", "\xa9"}, "café", "café"},
        {{" a\xff"
          "b"},
         "a\ufffdb",
         "a\ufffdb"},
        {{longText}, longText.constData(), longPrefix.constData()},
    };
    load();
    for (const Case &item : cases) {
        FakeWhisper::enqueue({.segments = item.segments});
        takeLines();
        EXPECT_EQ(await(context->transcribe({0.5F})), QString::fromUtf8(item.text));
        EXPECT_EQ(takeLines().back(),
                  line("Batch transcription complete: '") + QString::fromUtf8(item.logged)
                      + u"...'"_s);
    }
}

TEST_F(WhisperContextTest, NothingToTranscribeIsNoFailure)
{
    load();
    takeLines();
    EXPECT_EQ(await(context->transcribe({})), QString());
    EXPECT_THAT(takeLines(), IsEmpty());
    EXPECT_THAT(FakeWhisper::calls(), IsEmpty());

    FakeWhisper::enqueue({.segments = {" leftover"}, .code = -7});
    EXPECT_EQ(await(context->transcribe({0.5F, 0.5F})),
              tl::unexpected(WhisperContextError::transcriptionFailed));
    EXPECT_THAT(takeLines(),
                ElementsAre(line("Transcribing 2 samples in batch..."),
                            line("Batch transcription failed with code -7")));
}

TEST_F(WhisperContextTest, OperationsRunInTheOrderOfTheirCalls)
{
    load();
    FakeWhisper::Hold hold;
    context->transcribe({0.1F});
    context->setLanguage(u"de"_s);
    context->transcribe({0.2F});
    context->unloadModel();
    const auto last = context->transcribe({0.3F});
    ASSERT_TRUE(hold.waitUntilHeld());
    EXPECT_EQ(FakeWhisper::calls().size(), 1U);
    hold.release();

    EXPECT_FALSE(await(last));
    const auto calls = FakeWhisper::calls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].language, "en");
    EXPECT_EQ(calls[1].language, "de");
}

TEST_F(WhisperContextTest, DestructionWaitsForNothingAndFreesAfterTheWork)
{
    load();
    FakeWhisper::Hold hold;
    const auto running = context->transcribe({0.1F});
    const auto queued = context->transcribe({0.2F});
    ASSERT_TRUE(hold.waitUntilHeld());

    context.reset();

    EXPECT_FALSE(running.isFinished());
    EXPECT_EQ(FakeWhisper::liveContexts(), 1);
    hold.release();
    EXPECT_EQ(await(running), u"Hello world.");
    EXPECT_EQ(await(queued), u"Hello world.");
    EXPECT_TRUE(SerialExecutor::finishAll(std::chrono::seconds(20)));
    EXPECT_EQ(FakeWhisper::liveContexts(), 0);
}

TEST_F(WhisperContextTest, TheEndOfTheProgramAbandonsWhatTakesTooLong)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    using FakeWhisper::Point;
    for (const Point point : {Point::load, Point::transcription, Point::release}) {
        SCOPED_TRACE(int(point));
        EXPECT_EXIT(
            {
                if (point != Point::load)
                    load();
                FakeWhisper::Hold hold(point);
                if (point == Point::load)
                    context->loadModel(modelPath());
                else if (point == Point::transcription)
                    context->transcribe({0.1F});
                else
                    context->unloadModel();
                if (!hold.waitUntilHeld()
                    || SerialExecutor::finishAll(std::chrono::milliseconds(1)))
                    _exit(1);
                context.reset();
                takeLines();
                hold.release();
                // Abandoned, it logs nothing, however far the library gets.
                const bool logs = waitUntil([this] { return !takeLines().isEmpty(); },
                                            std::chrono::milliseconds(100));
                _exit(!logs && SerialExecutor::hasAbandoned() ? 0 : 2);
            },
            ::testing::ExitedWithCode(0), "");
    }
}

} // namespace
} // namespace Velloro
