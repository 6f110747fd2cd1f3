#pragma once

namespace Velloro {

class AppState;

/// The overlay beside the pointer that shows a dictation under way. Main thread only.
class RecordingPill
{
public:
    virtual ~RecordingPill() = default;

    /// Shows the pill for this state, which outlives it.
    virtual void show(AppState &appState) = 0;
    /// Takes the pill off the screen; it is kept for the next recording.
    virtual void hide() = 0;
};

} // namespace Velloro
