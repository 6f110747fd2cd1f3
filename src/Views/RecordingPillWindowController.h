#pragma once

#include "Core/RecordingPill.h"

namespace Velloro {

/// Owns the pill's window: makes, places, shows and hides it.
class RecordingPillWindowController : public RecordingPill
{
public:
    void show(AppState &appState) override;
    void hide() override;
};

} // namespace Velloro
