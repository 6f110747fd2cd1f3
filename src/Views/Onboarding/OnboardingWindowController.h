#pragma once

#include "Managers/PermissionsManager.h"
#include "Views/Onboarding/ModelDownloadStepModel.h"
#include "Views/WindowController.h"

namespace Velloro {

/// The first-run window, "Welcome to Velloro", which opens at its first step in the middle of the
/// screen. Main thread only.
class OnboardingWindowController : public WindowController
{
    Q_OBJECT

public:
    /// All of these outlive it.
    OnboardingWindowController(Platform &platform, AppState &appState,
                               HotkeyManager &hotkeyManager, ViewEngine &engine,
                               QObject *parent = nullptr);
    ~OnboardingWindowController() override;

protected:
    [[nodiscard]] Content makeContent() override;

private:
    // What goes on when the window has been closed.
    PermissionsManager m_permissionsManager;
    ModelDownloadStepModel m_download;
};

} // namespace Velloro
