#pragma once

#include "AppDelegate.h"
#include "Views/Onboarding/OnboardingWindowController.h"
#include "Views/Settings/SettingsWindowController.h"
#include "Views/Tray/MenuBarExtra.h"
#include "Views/Windows/ViewEngine.h"

#include <QObject>

namespace Velloro {

/// The application's scenes, and the delegate behind them. Main thread only.
class VelloroApp : public QObject
{
    Q_OBJECT

public:
    /// `platform` and `hotkeyManager` outlive the application. `repositoryBaseUrl` is where the
    /// model files lie; another one is for tests alone.
    VelloroApp(Platform &platform, HotkeyManager &hotkeyManager,
               const QString &repositoryBaseUrl = ModelCatalog::repositoryBaseUrl(),
               QObject *parent = nullptr);

    /// Shows the tray icon and runs the launch sequence.
    void launch();
    /// Cleans up and ends the event loop.
    void terminate();
    /// Puts the program in front of the user, as a second start asks for: the panel, or the welcome
    /// where it is not completed.
    void activate();

private:
    ViewEngine m_viewEngine;
    AppDelegate m_appDelegate;
    MenuBarExtra m_menuBarExtra;
    SettingsWindowController m_settingsWindow;
    OnboardingWindowController m_onboardingWindow;
};

} // namespace Velloro
