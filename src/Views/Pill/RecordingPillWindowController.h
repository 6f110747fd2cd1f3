#pragma once

#include "Core/Dictation/RecordingPill.h"
#include "Platform/ScreenFrames.h"
#include "Views/Pill/RecordingPillViewModel.h"
#include "Views/Windows/FramelessView.h"
#include "Views/Windows/ViewEngine.h"

#include <memory>

namespace Velloro {

/// Owns the pill's window: makes, places, shows and hides it. Main thread only.
///
/// The window never takes the keyboard focus, is in no task list or window switcher, and is on
/// every desktop above all other windows: it is outside the window manager's care.
class RecordingPillWindowController : public RecordingPill
{
public:
    /// Both outlive the controller.
    RecordingPillWindowController(ViewEngine &engine, ScreenFrames &screenFrames);
    ~RecordingPillWindowController() override;

    void show(AppState &appState) override;
    void hide() override;

    /// The window; null until it is first shown, then always the same.
    [[nodiscard]] QQuickWindow *window() const { return m_window.get(); }

private:
    void createWindow(AppState &appState);
    void positionWindow();

    ViewEngine &m_engine;
    ScreenFrames &m_screenFrames;
    std::unique_ptr<RecordingPillViewModel> m_model;
    std::unique_ptr<FramelessView> m_window;
};

} // namespace Velloro
