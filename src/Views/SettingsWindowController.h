#pragma once

#include "Core/AppState.h"
#include "Managers/HotkeyManager.h"
#include "Platform/Platform.h"
#include "Views/ViewWindow.h"

#include <QObject>

namespace Velloro {

/// The settings window. Main thread only.
class SettingsWindowController : public QObject
{
    Q_OBJECT

public:
    /// All of these outlive it.
    SettingsWindowController(Platform &platform, AppState &appState,
                             HotkeyManager &hotkeyManager, ViewEngine &engine,
                             QObject *parent = nullptr);

    /// Opens the window, or brings the one that is open to the front.
    void open();

    /// Null while it is closed.
    [[nodiscard]] QQuickWindow *window() const { return m_window.window(); }

private:
    Platform &m_platform;
    AppState &m_appState;
    HotkeyManager &m_hotkeyManager;
    ViewEngine &m_engine;
    ViewWindow m_window;
};

} // namespace Velloro
