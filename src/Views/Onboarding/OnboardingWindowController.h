#pragma once

#include "Core/AppState.h"
#include "Managers/HotkeyManager.h"
#include "Managers/PermissionsManager.h"
#include "Platform/Platform.h"
#include "Views/Onboarding/ModelDownloadStepModel.h"
#include "Views/ViewWindow.h"

#include <QObject>

namespace Velloro {

/// The first-run window, "Welcome to Velloro". Main thread only.
class OnboardingWindowController : public QObject
{
    Q_OBJECT

public:
    /// All of these outlive it.
    OnboardingWindowController(Platform &platform, AppState &appState,
                               HotkeyManager &hotkeyManager, ViewEngine &engine,
                               QObject *parent = nullptr);

    /// Opens the window at its first step, in the middle of the screen, or brings the one that is
    /// open to the front.
    void open();

    /// Null while it is closed.
    [[nodiscard]] QQuickWindow *window() const { return m_window.window(); }

private:
    Platform &m_platform;
    AppState &m_appState;
    HotkeyManager &m_hotkeyManager;
    ViewEngine &m_engine;
    // What goes on when the window has been closed.
    PermissionsManager m_permissionsManager;
    ModelDownloadStepModel m_download;
    ViewWindow m_window;
};

} // namespace Velloro
