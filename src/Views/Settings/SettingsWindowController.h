#pragma once

#include "Views/Windows/WindowController.h"

namespace Velloro {

/// The settings window. Main thread only.
class SettingsWindowController : public WindowController
{
    Q_OBJECT

public:
    /// All of these outlive it.
    SettingsWindowController(Platform &platform, AppState &appState, HotkeyManager &hotkeyManager,
                             ViewEngine &engine, QObject *parent = nullptr);

protected:
    [[nodiscard]] Content makeContent() override;
};

} // namespace Velloro
