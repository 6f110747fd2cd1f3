#include "Base/StringLiterals.h"
#include "Support/LogRecorder.h"
#include "Support/WaitUntil.h"
#include "Views/Settings/SettingsWindowController.h"
#include "Views/WindowTestBase.h"

#include <QProcess>
#include <QSignalSpy>
#include <QWidget>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

class SettingsWindowTest : public WindowTestBase<SettingsWindowController>
{
protected:
    void open()
    {
        WindowTestBase::open();
        ASSERT_TRUE(window());
        // From the tabs on, as the window is opened.
        if (QQuickItem *tab = probe().item(u"tab0"_s))
            tab->forceActiveFocus();
    }
    [[nodiscard]] bool checked(const QString &name) const
    {
        QQuickItem *item = probe().item(name);
        return item && item->property("checked").toBool();
    }
    /// How many rows of a list are there, whether in sight or not.
    [[nodiscard]] qsizetype rowCount(const QString &list) const
    {
        return probe()
            .item(list)
            ->property("contentItem")
            .value<QQuickItem *>()
            ->childItems()
            .size();
    }
};

TEST_F(SettingsWindowTest, IsOneWindowThatTheKeyboardOpensTabByTab)
{
    open();
    QQuickWindow *first = window();
    probe().click(u"tab0"_s);
    EXPECT_TRUE(checked(u"tab0"_s)) << "clicked again";
    EXPECT_EQ(first->size(), QSize(500, 400));
    controller.open();
    EXPECT_EQ(window(), first);

    QStringList tabs;
    for (int count = 0; count < 6; ++count) {
        tabs << probe().focusedName();
        probe().press(Qt::Key_Right);
    }
    EXPECT_EQ(tabs,
              QStringList({u"General"_s, u"Model"_s, u"Dictionary"_s, u"History"_s, u"Privacy"_s,
                           u"General"_s}));
    probe().press(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_TRUE(probe().item(u"newWord"_s));

    probe().press(Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([this] { return !window(); }));
    open();
    EXPECT_TRUE(probe().item(u"playSounds"_s)) << "it starts with its first tab again";
}

TEST_F(SettingsWindowTest, IsShownAnewWhereTheDesktopHasPlacesAndFocusToItself)
{
    memory.screenFrames->placesWindows = false;
    open();
    QQuickWindow *first = window();
    QSignalSpy shown(first, &QWindow::visibleChanged);
    controller.open();
    EXPECT_EQ(shown.count(), 0) << "it has the focus";

    QWidget document;
    document.show();
    document.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&document));
    open();
    EXPECT_EQ(window(), first);
    EXPECT_EQ(shown.count(), 2);

    memory.appearance->scale = 1.5;
    Q_EMIT memory.appearance->changed();
    EXPECT_EQ(shown.count(), 4) << "a larger one has another place";
    EXPECT_EQ(window()->size(), QSize(750, 600));
    controller.close();
    EXPECT_FALSE(window());
}

TEST_F(SettingsWindowTest, EverySwitchWritesWhatItShowsAndShowsWhatIsWrittenElsewhere)
{
    open();
    const struct
    {
        const char16_t *property;
        const char16_t *name;
        bool (AppState::*get)() const;
        void (AppState::*set)(bool);
    } switches[] = {
        {u"playSounds", u"Play sounds", &AppState::playSounds, &AppState::setPlaySounds},
        {u"insertAsPlainText", u"Insert as plain text", &AppState::insertAsPlainText,
         &AppState::setInsertAsPlainText},
        {u"launchAtLogin", u"Launch at login", &AppState::launchAtLogin,
         &AppState::setLaunchAtLogin},
        {u"requireTextFieldFocus", u"Require text field focus", &AppState::requireTextFieldFocus,
         &AppState::setRequireTextFieldFocus},
        {u"enableRealtimeStreaming", u"Realtime streaming (Experimental)",
         &AppState::enableRealtimeStreaming, &AppState::setEnableRealtimeStreaming},
        {u"enableTextCorrection", u"Text correction (Experimental)",
         &AppState::enableTextCorrection, &AppState::setEnableTextCorrection},
    };
    for (const auto &[property, name, get, set] : switches) {
        const QString id = QString::fromUtf16(property);
        ASSERT_TRUE(probe().tabTo(QString::fromUtf16(name))) << id.toStdString();
        const bool before = (appState.*get)();
        EXPECT_EQ(checked(id), before);
        probe().press(Qt::Key_Space);
        EXPECT_EQ((appState.*get)(), !before) << id.toStdString();
        EXPECT_EQ(checked(id), !before);
        (appState.*set)(before);
        EXPECT_EQ(checked(id), before) << id.toStdString();
        (appState.*set)(!before);
        EXPECT_EQ(checked(id), !before) << id.toStdString();
    }
}

TEST_F(SettingsWindowTest, SaysWhatTheHotkeyDoesNotDoHere)
{
    open();
    QQuickItem *note = probe().item(u"hotkeyLimits"_s);
    const struct
    {
        HotkeyAbilities abilities;
        const char *text;
    } cases[] = {
        {{.tellsReleases = false}, "In hold mode, too, one press starts the recording"},
        {{.coversAllWindows = false}, "seen over X11 windows only"},
        {{}, ""},
    };
    for (const auto &c : cases) {
        memory.hotkeyRegistration->currentAbilities = c.abilities;
        hotkeyManager->registerHotkey();
        EXPECT_EQ(note->isVisible(), *c.text != 0);
        EXPECT_THAT(note->property("text").toString().toStdString(), ::testing::HasSubstr(c.text));
    }
}

TEST_F(SettingsWindowTest, ModeAndLanguageAreChosenWithTheKeyboard)
{
    open();
    ASSERT_TRUE(probe().tabTo(u"Hold to Talk"_s));
    probe().press(Qt::Key_Right);
    EXPECT_EQ(appState.recordingMode(), RecordingMode::toggle);
    appState.setRecordingMode(RecordingMode::holdToTalk);
    EXPECT_EQ(probe().item(u"recordingMode"_s)->property("currentIndex"), 0);

    ASSERT_TRUE(probe().tabTo(u"Transcription Language: English (Best accuracy)"_s));
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Return})
        probe().press(key);
    EXPECT_EQ(appState.selectedLanguage(), WhisperLanguage::polish);
    appState.setSelectedLanguage(WhisperLanguage::german);
    EXPECT_EQ(text(u"language"_s),
              hint(WhisperLanguage::german) ? displayName(WhisperLanguage::german) + u" ("_s
                      + *hint(WhisperLanguage::german) + u")"_s
                                            : displayName(WhisperLanguage::german));
}

TEST_F(SettingsWindowTest, TheDictionaryIsKeptWithTheKeyboardAlone)
{
    open();
    probe().press(Qt::Key_Right);
    probe().press(Qt::Key_Right);
    ASSERT_TRUE(probe().tabTo(u"New word"_s));
    QTest::keyClick(window(), 'x');
    probe().press(Qt::Key_Return);
    QTest::keyClick(window(), 'y');
    EXPECT_EQ(probe().item(u"newWord"_s)->property("text"), u"y"_s);
    ASSERT_TRUE(probe().tabTo(u"Add"_s));
    probe().press(Qt::Key_Space);
    ASSERT_TRUE(probe().tabTo(u"ChatGPT"_s));
    probe().press(Qt::Key_Space);
    EXPECT_EQ(appState.customDictionary(), QStringList({u"x"_s, u"y"_s, u"ChatGPT"_s}));
    EXPECT_EQ(probe().item(u"newWord"_s)->property("text"), QString());

    // Rows out of sight are made when there is time.
    ASSERT_TRUE(waitUntil([this] { return probe().tabTo(u"x"_s); }));
    probe().press(Qt::Key_Down);
    EXPECT_EQ(probe().focusedName(), u"y");
    EXPECT_TRUE(probe().showsFocus());
    probe().hold(Qt::Key_Delete);
    EXPECT_EQ(appState.customDictionary(), QStringList({u"x"_s, u"ChatGPT"_s}));
    EXPECT_EQ(probe().focusedName(), u"ChatGPT");
    probe().press(Qt::Key_Return);
    probe().press(Qt::Key_Tab);
    EXPECT_EQ(probe().focusedName(), u"Remove ChatGPT");
    probe().press(Qt::Key_Return);
    EXPECT_EQ(probe().focusedName(), u"x") << "not its trash: the next Return would go on";
    probe().press(Qt::Key_Delete);
    EXPECT_TRUE(appState.customDictionary().isEmpty());
    EXPECT_EQ(probe().focusedName(), u"New word");
}

TEST_F(SettingsWindowTest, LongListsAreScrolledThroughAtOnce)
{
    QStringList words;
    for (int number = 0; number < 10'000; ++number)
        words << u"word %1"_s.arg(number);
    appState.setCustomDictionary(words);
    for (int number = 0; number < 50; ++number)
        appState.addToHistory(u"%1 "_s.arg(number)
                              + u"lorem ipsum "_s.repeated(number % 7 ? 1 : 830));
    open();
    probe().press(Qt::Key_Right);
    probe().press(Qt::Key_Right);
    ASSERT_TRUE(waitUntil([this] { return probe().tabTo(u"word 0"_s); }));
    EXPECT_EQ(probe().smallButtons(), QStringList());
    probe().press(Qt::Key_End);
    for (const QString &name : {u"OpenAI"_s, u"New word"_s}) {
        ASSERT_TRUE(probe().tabTo(name));
        EXPECT_TRUE(WindowProbe::isInSight(*window()->activeFocusItem())) << name.toStdString();
    }
    ASSERT_TRUE(waitUntil([this] {
        probe().press(Qt::Key_Tab);
        return probe().focusedName().startsWith(u"word ");
    })) << "the list is a stop wherever it was scrolled to";
    probe().press(Qt::Key_End);
    EXPECT_EQ(probe().focusedName(), u"word 9999");
    for (int count = 0; count < 100; ++count)
        probe().press(Qt::Key_Up);
    EXPECT_EQ(probe().focusedName(), u"word 9899");
    EXPECT_LT(rowCount(u"words"_s), 100) << "rows far out of sight are not there";

    probe().press(Qt::Key_Tab, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([this] { return probe().tabTo(u"Copy"_s); }));
    EXPECT_EQ(probe().smallButtons(), QStringList());
    const auto copied = [this] {
        EXPECT_TRUE(WindowProbe::isInSight(*window()->activeFocusItem()->parentItem()));
        probe().press(Qt::Key_Space);
        EXPECT_EQ(probe().focusedName(), u"Copied");
        return memory.pasteboard->content.value_or(QString()).section(u' ', 0, 0);
    };
    for (int round = 0; round < 2; ++round) {
        probe().press(Qt::Key_End);
        EXPECT_EQ(copied(), u"0");
        EXPECT_LT(rowCount(u"entries"_s), 40);
        probe().press(Qt::Key_Home);
        EXPECT_EQ(copied(), u"49");
    }
    probe().press(Qt::Key_Down);
    appState.addToHistory(u"50 comes meanwhile"_s);
    EXPECT_EQ(copied(), u"48") << "the keyboard stays with its entry";
    probe().press(Qt::Key_Down);
    EXPECT_EQ(copied(), u"47");
    ASSERT_TRUE(probe().tabTo(u"Clear All"_s));
    probe().press(Qt::Key_Return);
    EXPECT_TRUE(appState.transcriptionHistory().isEmpty());
    EXPECT_FALSE(probe().item(u"entries"_s)->isVisible());
    EXPECT_EQ(probe().focusedName(), u"History") << "the button has gone";
}

TEST_F(SettingsWindowTest, ThePrivacyPaneFollowsThePermissionsAndClearsTheHistory)
{
    memory.captureAuthorization->status = AuthorizationStatus::denied;
    appState.addToHistory(u"some words"_s);
    open();
    probe().press(Qt::Key_Left);
    EXPECT_TRUE(probe().item(u"permissionsNote"_s)->isVisible());
    ASSERT_TRUE(probe().tabTo(u"Enable"_s));
    appState.setHasMicrophonePermission(true);
    EXPECT_FALSE(probe().item(u"enableMicrophone"_s)->isVisible());
    EXPECT_TRUE(probe().item(u"permissionsNote"_s)->isVisible()) << "one is still missing";
    ASSERT_TRUE(probe().tabTo(u"Enable"_s));
    probe().press(Qt::Key_Return);
    EXPECT_THAT(memory.systemSettings->asked, ::testing::ElementsAre(SettingsPage::accessibility));
    appState.setHasAccessibilityPermission(true);
    EXPECT_FALSE(probe().item(u"permissionsNote"_s)->isVisible());

    ASSERT_TRUE(probe().tabTo(u"Clear Transcription History"_s));
    probe().press(Qt::Key_Return);
    EXPECT_TRUE(appState.transcriptionHistory().isEmpty());
}

TEST_F(SettingsWindowTest, TheHelpForAPermissionBelongsToTheSettingsAndHasTheKeyboard)
{
    memory.systemSettings->hasPages = false;
    memory.captureAuthorization->status = AuthorizationStatus::denied;
    open();
    probe().press(Qt::Key_Left);
    EXPECT_EQ(probe().smallButtons(), QStringList());
    ASSERT_TRUE(probe().tabTo(u"Enable"_s));
    probe().press(Qt::Key_Return);
    const QWindowList windows = QGuiApplication::topLevelWindows();
    const auto help = std::ranges::find(windows, u"Microphone"_s, &QWindow::title);
    ASSERT_NE(help, windows.end());
    ASSERT_TRUE(QTest::qWaitForWindowActive(*help));
    QProcess xprop;
    xprop.start(u"xprop"_s, {u"-id"_s, QString::number((*help)->winId()), u"WM_TRANSIENT_FOR"_s});
    ASSERT_TRUE(xprop.waitForFinished());
    EXPECT_THAT(xprop.readAll().toStdString(),
                ::testing::HasSubstr(QByteArray::number(window()->winId(), 16).toStdString()));
    const WindowProbe inHelp(qobject_cast<QQuickWindow *>(*help));
    EXPECT_TRUE(waitUntil([&] { return inHelp.showsFocus(); }));
    EXPECT_EQ(inHelp.focusedName(), inHelp.item(u"act"_s)->property("text").toString());
    inHelp.press(Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([this] { return window()->isActive(); }));
}

} // namespace
} // namespace Velloro
