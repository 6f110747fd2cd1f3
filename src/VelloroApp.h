#pragma once

#include "AppDelegate.h"
#include "Views/MenuBarExtra.h"
#include "Views/ViewEngine.h"

#include <QObject>

namespace Velloro {

/// The application's scenes, and the delegate behind them. Main thread only.
class VelloroApp : public QObject
{
    Q_OBJECT

public:
    /// `platform` and `HotkeyManager::shared` outlive the application.
    explicit VelloroApp(Platform &platform, QObject *parent = nullptr);

    /// Shows the tray icon and runs the launch sequence.
    void launch();
    /// Cleans up and ends the event loop.
    void terminate();
    /// Puts the program in front of the user, as a second start asks for.
    void activate();

Q_SIGNALS:
    /// The user asks for the settings window.
    void openSettingsRequested();

private:
    ViewEngine m_viewEngine;
    AppDelegate m_appDelegate;
    MenuBarExtra m_menuBarExtra;
};

} // namespace Velloro
