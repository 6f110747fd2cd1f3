#include "Base/StringLiterals.h"
#include "Support/InMemoryOverlay.h"
#include "Support/InMemoryPlatform.h"
#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"
#include "Views/Pill/RecordingPillWindowController.h"

#include <QElapsedTimer>
#include <QTest>
#include <gtest/gtest.h>

namespace Velloro {

namespace {

/// Longer than any picture takes that is not waited for.
constexpr int severalFrames = 100;

InMemoryOverlay *addOverlay(InMemoryPlatform &memory)
{
    auto made = std::make_unique<InMemoryOverlay>();
    InMemoryOverlay *overlay = made.get();
    memory.platform.overlay = std::move(made);
    return overlay;
}

class RecordingPillOverlayTest : public ::testing::Test
{
protected:
    /// Shows the pill, at a place that it gets at once.
    void show()
    {
        controller.show(appState);
        Q_EMIT overlay->placed();
    }

    /// Waits for so many pictures, and for none more.
    void expectPictures(qsizetype count)
    {
        EXPECT_TRUE(waitUntil([&] { return overlay->pictures.size() >= count; }));
        QTest::qWait(severalFrames);
        ASSERT_EQ(overlay->pictures.size(), count);
    }

    InMemoryPlatform memory;
    InMemoryOverlay *overlay = addOverlay(memory);
    AppState appState{memory.platform};
    ViewEngine engine{*memory.appearance};
    RecordingPillWindowController controller{engine, memory.platform};
};

TEST_F(RecordingPillOverlayTest, IsPaintedOnlyWhereItIsSeen)
{
    LogRecorder log;
    controller.show(appState);
    EXPECT_EQ(overlay->size, QSize(260, 48));
    EXPECT_GT(overlay->bottomMargin, 0);
    expectPictures(0);
    Q_EMIT overlay->placed();
    expectPictures(1);

    // What changes is shown when the screen can show it, all at once.
    appState.setTranscriptionState(TranscriptionState::listening);
    appState.setRecordingDuration(61);
    expectPictures(1);
    Q_EMIT overlay->frameShown();
    expectPictures(2);
    EXPECT_NE(overlay->pictures.value(0), overlay->pictures.value(1));
    Q_EMIT overlay->frameShown();
    expectPictures(2);

    controller.hide();
    EXPECT_FALSE(overlay->size);
    appState.setRecordingDuration(62);
    expectPictures(2);
    show();
    expectPictures(3);

    // Another screen is empty at first, too.
    Q_EMIT overlay->placed();
    expectPictures(4);
    EXPECT_EQ(overlay->pictures.value(2), overlay->pictures.value(3));
    EXPECT_EQ(log.lines().filter(u"[RecordingPill]"_s),
              (QStringList{u"[RecordingPill] Window created"_s,
                           u"[RecordingPill] Window shown at (0.0, 0.0, 260.0, 48.0)"_s,
                           u"[RecordingPill] Window hidden"_s,
                           u"[RecordingPill] Window shown at (0.0, 0.0, 260.0, 48.0)"_s}));
}

TEST_F(RecordingPillOverlayTest, IsPaintedInThePixelsOfTheScreen)
{
    const struct
    {
        double ratio;
        QSize pixels;
    } cases[] = {{1.25, {325, 60}}, {1.5, {390, 72}}, {2, {520, 96}}, {1, {260, 48}}};
    appState.setTranscriptionState(TranscriptionState::listening);
    show();
    expectPictures(1);
    for (const auto &c : cases) {
        overlay->pictures.clear();
        overlay->setPixelRatio(c.ratio);
        Q_EMIT overlay->frameShown();
        expectPictures(1);
        const QImage picture = overlay->pictures[0];
        EXPECT_EQ(picture.size(), c.pixels) << c.ratio;
        EXPECT_EQ(picture.pixelColor(0, 0).alpha(), 0) << "the corners are round";
        EXPECT_GT(picture.pixelColor(c.pixels.width() / 2, 2).alpha(), 200);
    }
    // All of it in the new pixels, as one that never had others.
    overlay->pictures.clear();
    overlay->setPixelRatio(2);
    Q_EMIT overlay->frameShown();
    expectPictures(1);
    const QImage picture = overlay->pictures[0];

    InMemoryPlatform otherMemory;
    InMemoryOverlay &other = *addOverlay(otherMemory);
    other.ratio = 2;
    RecordingPillWindowController pill(engine, otherMemory.platform);
    pill.show(appState);
    Q_EMIT other.placed();
    ASSERT_TRUE(waitUntil([&] { return !other.pictures.isEmpty(); }));
    EXPECT_EQ(picture, other.pictures[0]);
}

TEST_F(RecordingPillOverlayTest, IsPaintedSixtyTimesASecondAtMost)
{
    show();
    expectPictures(1);
    // A screen that takes whatever it gets, and a scene that never rests.
    overlay->pictures.clear();
    QElapsedTimer elapsed;
    elapsed.start();
    for (int turn = 0; overlay->pictures.size() < 20; ++turn) {
        appState.setTranscriptionState(turn % 2 ? TranscriptionState::listening
                                                : TranscriptionState::inserting);
        Q_EMIT overlay->frameShown();
        QCoreApplication::processEvents();
        ASSERT_LT(elapsed.elapsed(), 30000);
    }
    EXPECT_GE(elapsed.elapsed(), 19 * 1000 / 60);
}

} // namespace
} // namespace Velloro
