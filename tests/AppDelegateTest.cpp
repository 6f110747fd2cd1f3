#include "AppDelegate.h"

#include "Base/StringLiterals.h"
#include "Support/DictationControllerTestBase.h"

#include <QSignalSpy>
#include <QTest>
#include <QWindow>

using namespace Velloro;
using namespace std::chrono_literals;

namespace {

class CountedUpdater : public Updater
{
public:
    explicit CountedUpdater(int &starts)
        : m_starts(starts)
    {
    }
    void start() override { ++m_starts; }

private:
    int &m_starts;
};

class AppDelegateTest : public DictationControllerTestBase
{
protected:
    void start()
    {
        delegate.reset();
        hotkeys.reset();
        hotkeys = std::make_unique<HotkeyManager>(memory.platform);
        delegate = std::make_unique<AppDelegate>(memory.platform, *hotkeys, [this] {
            return std::make_unique<RecordedPill>([this](const QString &call) { pill << call; });
        });
        delegate->applicationDidFinishLaunching();
    }
    [[nodiscard]] AppState &appState() const { return delegate->appState(); }
    [[nodiscard]] bool waitForModel() const
    {
        return waitUntil([&] { return appState().whisperManager().isModelLoaded(); });
    }

    std::unique_ptr<AppDelegate> delegate;
};

TEST_F(AppDelegateTest, SetsDictationUpOnce)
{
    addModel(u"small"_s);
    memory.loginItem->error = PlatformError{13, u"Permission denied"_s};
    int updaterStarts = 0;
    memory.platform.updater = std::make_unique<CountedUpdater>(updaterStarts);
    QGuiApplication::setQuitOnLastWindowClosed(true);
    start();
    EXPECT_EQ(updaterStarts, 1);
    EXPECT_FALSE(QGuiApplication::quitOnLastWindowClosed());
    EXPECT_EQ(memory.hotkeyRegistration->registered.size(), 1U);
    EXPECT_TRUE(appState().hasMicrophonePermission());
    EXPECT_TRUE(appState().hasAccessibilityPermission());
    EXPECT_EQ(appState().downloadedModels(), AppState::PresetSet{ModelPreset::small});
    EXPECT_EQ(memory.loginItem->calls, QStringList{u"refresh"_s});
    EXPECT_TRUE(log.lines().contains(u"Failed to set launch at login: Permission denied"_s));
    ASSERT_TRUE(waitForModel());

    const DictationController *controller = delegate->dictationController();
    delegate->setupDictation();
    EXPECT_EQ(delegate->dictationController(), controller);
    EXPECT_EQ(memory.hotkeyRegistration->attempts.size(), 1U);

    // What is put into the folder by hand is found at the next launch.
    addModel(u"medium"_s);
    start();
    EXPECT_TRUE(appState().downloadedModels().contains(ModelPreset::medium));
}

TEST_F(AppDelegateTest, LaunchAtLoginRegistersAndLogsARefusal)
{
    memory.userDefaults->setValue(u"velloro.launchAtLogin"_s, true);
    start();
    EXPECT_EQ(memory.loginItem->calls, QStringList{u"refresh"_s})
        << "the initial value is no change";
    memory.loginItem->error = PlatformError{30, u"Read-only file system"_s};
    appState().setLaunchAtLogin(false);
    appState().setLaunchAtLogin(true);
    EXPECT_EQ(memory.loginItem->calls, QStringList({u"refresh"_s, u"unregister"_s, u"register"_s}));
    EXPECT_TRUE(appState().launchAtLogin()) << "the choice stays";
    EXPECT_EQ(log.lines().count(u"Failed to set launch at login: Read-only file system"_s), 2);
}

TEST_F(AppDelegateTest, EndsAtOnceInTheMiddleOfARecording)
{
    addModel(u"small"_s);
    start();
    ASSERT_TRUE(waitForModel());
    press();
    ASSERT_TRUE(waitUntil(
        [&] { return appState().transcriptionState() == TranscriptionState::listening; }));
    speak(4096);
    delegate->applicationShouldTerminate();
    EXPECT_EQ(delegate->dictationController(), nullptr);
    EXPECT_TRUE(memory.hotkeyRegistration->registered.empty());
    EXPECT_FALSE(appState().whisperManager().isModelLoaded());

    // The end is told twice; and nothing is heard of a key any more.
    delegate->applicationWillTerminate();
    release();
    ASSERT_TRUE(waitUntil([] { return FakeWhisper::liveContexts() == 0; }));
    EXPECT_EQ(typed(), QString());
}

TEST_F(AppDelegateTest, BringsTheFirstRunToTheFrontUntilItIsCompleted)
{
    QWindow other;
    other.setTitle(u"Welcome to something else"_s);
    QWindow welcome;
    welcome.setTitle(u"Welcome to Velloro"_s);
    welcome.show();
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&welcome));
    other.requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    start();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&welcome));

    welcome.hide();
    appState().setHasCompletedOnboarding(true);
    start();
    QTimer later; // It ends after the one that the launch has begun.
    QSignalSpy passed(&later, &QTimer::timeout);
    later.setTimerType(Qt::PreciseTimer);
    later.start(500ms);
    ASSERT_TRUE(waitUntil([&] { return passed.count() > 0; }));
    EXPECT_FALSE(welcome.isVisible());
}

} // namespace
