#pragma once

#include "Views/Onboarding/ModelDownloadStepViewModel.h"
#include "Views/Windows/WindowController.h"

namespace Velloro {

/// The first-run window, "Welcome to Velloro", which opens at its first step in the middle of the
/// screen. Main thread only.
class OnboardingWindowController : public WindowController
{
    Q_OBJECT

public:
    /// All of these outlive it.
    OnboardingWindowController(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                               ViewEngine &engine, QObject *parent = nullptr);
    ~OnboardingWindowController() override;

protected:
    [[nodiscard]] Content makeContent() override;

private:
    // The download continues when the window has been closed.
    ModelDownloadStepViewModel m_download;
};

} // namespace Velloro
