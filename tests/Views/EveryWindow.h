#pragma once

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"
#include "Views/Onboarding/OnboardingWindowController.h"
#include "Views/Pill/RecordingPillWindowController.h"
#include "Views/Settings/SettingsWindowController.h"
#include "Views/Tray/MenuBarExtra.h"
#include "Views/WindowTestBase.h"

#include <functional>

namespace Velloro {

/// Opens every window of the program, one after the other, in each state that looks different.
class EveryWindow
{
public:
    /// Called when a window stands still, with what is seen in it.
    using Visit = std::function<void(const QString &place, QQuickWindow &window,
                                     InMemoryAppearance &appearance)>;

    /// `looks` is given to every window.
    EveryWindow(const InMemoryAppearance &looks, Visit visit)
        : m_looks(looks)
        , m_visit(std::move(visit))
    {
    }

    void visitAll() const
    {
        visitPill();
        visitPanel();
        visitSettings();
        visitOnboarding();
    }

private:
    /// A program of its own for each window.
    struct Stage
    {
        explicit Stage(const EveryWindow &every)
        {
            memory.appearance->dark = every.m_looks.dark;
            memory.appearance->scale = every.m_looks.scale;
            memory.hotkeyRegistration->refusal = 10;
            hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey);
            for (const char *id : {"base", "tiny", "tiny-q5_1"})
                memory.fileSystem->files.insert(
                    appState.whisperManager().modelURL(QLatin1StringView(id)));
            appState.whisperManager().refreshModelStates();
            for (const char *id : {"small", "medium", "tiny-q8_0", "tiny.en-q5_1"})
                appState.whisperManager().downloadModel(QLatin1StringView(id));
            DownloadSessionDelegate &downloads = memory.downloadSession->delegate;
            for (const int task : {1, 3})
                downloads.downloadDidWriteData(DownloadTaskId(task), 427'000, 1'000'000);
            for (const int task : {2, 4})
                downloads.downloadDidComplete(DownloadTaskId(task),
                                              PlatformError{1, u"No connection"_s});
        }
        template <typename Controller>
        [[nodiscard]] std::unique_ptr<Controller> make()
        {
            return std::make_unique<Controller>(memory.platform, appState, *hotkeyManager, engine);
        }

        InMemoryPlatform memory;
        AppState appState{memory.platform};
        std::unique_ptr<HotkeyManager> hotkeyManager
            = std::make_unique<HotkeyManager>(memory.platform);
        ViewEngine engine{*memory.appearance};
    };

    void visit(Stage &stage, const QString &place, QQuickWindow *window) const
    {
        ASSERT_TRUE(window) << place.toStdString();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window)) << place.toStdString();
        m_visit(place, *window, *stage.memory.appearance);
    }

    void visitPill() const
    {
        Stage stage(*this);
        stage.appState.setEnableRealtimeStreaming(true);
        stage.appState.setPartialTranscript(u"The quick brown fox jumps over the dog"_s);
        RecordingPillWindowController pill(stage.engine, stage.memory.platform);
        for (const TranscriptionState state :
             {TranscriptionState::idle, TranscriptionState::listening,
              TranscriptionState::transcribing, TranscriptionState::inserting}) {
            stage.appState.setTranscriptionState(state);
            pill.show(stage.appState);
            visit(stage, u"pill %1"_s.arg(int(state)), pill.window());
        }
    }

    void visitPanel() const
    {
        Stage stage(*this);
        const auto panel = stage.make<MenuBarExtra>();
        panel->openPanel();
        visit(stage, u"panel"_s, panel->panel());
    }

    void visitSettings() const
    {
        Stage stage(*this);
        stage.memory.systemSettings->hasPages = false;
        const auto settings = stage.make<SettingsWindowController>();
        settings->open();
        QQuickWindow *window = settings->window();
        ASSERT_TRUE(window);
        const WindowProbe probe(window);
        QQuickItem *view = window->contentItem()->childItems().constFirst();
        const auto show = [&](int tab, const QString &state) {
            view->setProperty("currentIndex", tab);
            visit(stage, u"settings %1 %2"_s.arg(tab).arg(state), window);
        };
        const auto press
            = [&](const QString &name) { QMetaObject::invokeMethod(probe.item(name), "clicked"); };
        const auto showMenu = [&](int tab, const QString &button) {
            press(button);
            show(tab, u"menu"_s);
            probe.press(Qt::Key_Escape);
        };
        show(0, {});
        press(u"hotkeyRecorder"_s);
        show(0, u"recording"_s);
        press(u"hotkeyRecorder"_s);
        showMenu(0, u"language"_s);
        show(1, u"closed"_s);
        press(u"header"_s);
        show(1, {});
        showMenu(1, u"assignedModel"_s);
        for (const char *state : {"empty", "filled"}) {
            show(2, QLatin1StringView(state));
            show(3, QLatin1StringView(state));
            stage.appState.setCustomDictionary({u"Claude"_s, u"ChatGPT"_s});
            stage.appState.addToHistory(u"A short one."_s);
        }
        show(4, u"granted"_s);
        stage.memory.captureAuthorization->status = AuthorizationStatus::denied;
        stage.appState.setHasMicrophonePermission(false);
        stage.appState.setHasAccessibilityPermission(false);
        show(4, u"not granted"_s);
        press(u"enableMicrophone"_s);
        for (QWindow *help : QGuiApplication::topLevelWindows()) {
            if (help->transientParent() == window)
                visit(stage, u"help"_s, qobject_cast<QQuickWindow *>(help));
        }
    }

    void visitOnboarding() const
    {
        Stage stage(*this);
        const auto onboarding = stage.make<OnboardingWindowController>();
        onboarding->open();
        QQuickWindow *window = onboarding->window();
        ASSERT_TRUE(window);
        const WindowProbe probe(window);
        for (int step = 0; step < 6; ++step) {
            // A step comes into view by and by.
            ASSERT_TRUE(waitUntil([&] { return probe.item(u"step"_s)->opacity() == 1; }));
            visit(stage, u"onboarding %1"_s.arg(step), window);
            QMetaObject::invokeMethod(probe.item(u"forward"_s), "clicked");
        }
    }

    const InMemoryAppearance &m_looks;
    Visit m_visit;
};

} // namespace Velloro
