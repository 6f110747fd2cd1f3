#include "Views/RecordingPillWindowController.h"

#include "Core/Log.h"

namespace Velloro {

// The window itself is not there yet: the tray icon alone shows the state.
void RecordingPillWindowController::show(AppState &) {}

void RecordingPillWindowController::hide()
{
    Log::line(u"RecordingPill", QStringLiteral("Window hidden"));
}

} // namespace Velloro
