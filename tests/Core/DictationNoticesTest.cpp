#include "Core/Dictation/DictationNotices.h"

#include "Base/StringLiterals.h"
#include "Support/DictationControllerTestBase.h"

using namespace Velloro;
using namespace std::chrono_literals;

namespace {

TEST(DictationNotices, TellsEachCauseOnceAMinute)
{
    InMemoryUserNotifications notifications;
    DictationNotices::TimePoint now{};
    DictationNotices notices(notifications, [&now] { return now; });
    using Cause = DictationNotices::Cause;
    const struct
    {
        std::chrono::seconds time;
        Cause cause;
        size_t toldInAll;
    } steps[] = {
        {0s, Cause::modelMissing, 1},        {59s, Cause::modelMissing, 1},
        {59s, Cause::microphoneRefused, 2},  {60s, Cause::modelMissing, 3},
        {118s, Cause::microphoneRefused, 3}, {119s, Cause::microphoneRefused, 4},
        {119s, Cause::modelMissing, 4},      {119s, Cause::wordsKept, 5},
        {119s, Cause::wordsKept, 6},
    };
    for (const auto &[time, cause, toldInAll] : steps) {
        now = DictationNotices::TimePoint(time);
        notices.tell(cause);
        EXPECT_EQ(notifications.delivered.size(), toldInAll) << time.count();
    }
}

class RefusedPressTest : public DictationControllerTestBase
{
protected:
    /// Presses until the log says that it was to no avail, twice, and returns what the user was
    /// told, once.
    QString toldAfterPresses(const QString &message)
    {
        memory.userNotifications->delivered.clear();
        for (int presses = 1; presses <= 2; ++presses) {
            log.clear();
            press();
            EXPECT_TRUE(waitForMessage(message));
            release();
        }
        EXPECT_EQ(memory.userNotifications->delivered.size(), 1U) << message.toStdString();
        EXPECT_EQ(state->transcriptionState(), TranscriptionState::idle);
        return memory.userNotifications->delivered.empty()
            ? QString()
            : memory.userNotifications->delivered.front().second;
    }
};

TEST_F(RefusedPressTest, SaysWhatIsMissingAndWhereThatIsMended)
{
    launch();
    const QString missing = u"Cannot start recording: model not downloaded."_s;
    QString told = toldAfterPresses(missing);
    EXPECT_TRUE(told.contains(u"Medium"_s) && told.contains(u"Settings"_s)) << told.toStdString();
    state->whisperManager().downloadModel(u"small-q8_0"_s);
    told = toldAfterPresses(missing);
    EXPECT_TRUE(told.contains(u"still being downloaded"_s)) << told.toStdString();

    addModel(u"small"_s);
    FakeWhisper::setLoadScript([](const QString &) { return false; });
    told = toldAfterPresses(u"Failed to load model JIT: "_s);
    EXPECT_TRUE(told.contains(u"Failed to load whisper model"_s) && told.contains(u"Settings"_s))
        << told.toStdString();
    FakeWhisper::setLoadScript({});

    memory.captureError = PlatformError{5, u"No such device"_s};
    told = toldAfterPresses(u"Failed to start recording: "_s);
    EXPECT_TRUE(told.contains(u"No such device"_s) && told.contains(u"sound settings"_s))
        << told.toStdString();

    state->setHasMicrophonePermission(false);
    memory.captureAuthorization->granted = false;
    told = toldAfterPresses(u"Permission denied by user"_s);
    EXPECT_TRUE(told.contains(u"microphone"_s) && told.contains(u"sound settings"_s))
        << told.toStdString();
}

TEST_F(RefusedPressTest, SaysThatThePresetsModelIsDamaged)
{
    FakeWhisper::setLoadScript([](const QString &) { return false; });
    // Whether the press finds another one to try or not.
    for (const bool hasOther : {false, true}) {
        controller.reset();
        hotkeys.reset();
        launch();
        addModel(u"small-q8_0"_s);
        if (hasOther)
            addModel(u"small"_s);
        const QString told
            = toldAfterPresses(hasOther ? u"Failed to load model JIT: "_s
                                        : u"Cannot start recording: model not downloaded."_s);
        EXPECT_TRUE(told.contains(u"Medium preset is damaged"_s) && told.contains(u"Settings"_s))
            << told.toStdString();
    }

    // One that can't be read may be whole.
    ASSERT_TRUE(QFile::remove(state->whisperManager().modelURL(u"small-q8_0"_s)));
    EXPECT_TRUE(
        toldAfterPresses(u"Failed to load model JIT: "_s).contains(u"could not be loaded"_s));
}

TEST_F(RefusedPressTest, SaysThatTheHotkeyWasTakenByTheFieldThatRecordsIt)
{
    launch();
    hotkeys->setIsPaused(true);
    press();
    press();
    ASSERT_EQ(memory.userNotifications->delivered.size(), 1U);
    EXPECT_TRUE(memory.userNotifications->delivered[0].second.contains(u"⌥Space"_s));
    EXPECT_TRUE(messages().isEmpty());
}

} // namespace
