#pragma once

#include "Core/Dictation/RecordingPill.h"
#include "Platform/Platform.h"
#include "Views/Pill/RecordingPillViewModel.h"
#include "Views/Windows/FramelessView.h"
#include "Views/Windows/OverlayView.h"
#include "Views/Windows/ViewEngine.h"

#include <memory>

namespace Velloro {

/// Owns what the pill is shown in: makes, places, shows and hides it. Main thread only.
///
/// That is the platform's overlay where it has one, and a window near the pointer otherwise. The
/// window never takes the keyboard focus, is in no task list or window switcher, and is on every
/// desktop above all other windows: it is outside the window manager's care. Where nobody knows the
/// pointer it is at the bottom of the first screen, and lets clicks through.
class RecordingPillWindowController : public RecordingPill
{
public:
    /// Both outlive the controller.
    RecordingPillWindowController(ViewEngine &engine, Platform &platform);
    ~RecordingPillWindowController() override;

    void show(AppState &appState) override;
    void hide() override;

    /// The window, or the scene of the overlay; null until it is first shown, then always the same.
    [[nodiscard]] QQuickWindow *window() const;

private:
    void create(AppState &appState);
    [[nodiscard]] bool createWindow();
    [[nodiscard]] bool createOverlay();
    void showWindow();
    void positionWindow();
    [[nodiscard]] QRect frame() const;

    ViewEngine &m_engine;
    ScreenFrames &m_screenFrames;
    /// Null where the platform has none.
    Overlay *m_overlay;
    std::unique_ptr<RecordingPillViewModel> m_model;
    /// One of these.
    std::unique_ptr<FramelessView> m_window;
    std::unique_ptr<OverlayView> m_overlayView;
};

} // namespace Velloro
