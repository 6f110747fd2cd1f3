#include "Views/Shared/StatusText.h"

#include "Base/StringLiterals.h"

#include <QCoreApplication>

namespace Velloro {

QString statusText(TranscriptionState state)
{
    switch (state) {
    case TranscriptionState::idle:
        return QCoreApplication::translate("StatusText", "Ready");
    case TranscriptionState::listening:
        return QCoreApplication::translate("StatusText", "Listening...");
    case TranscriptionState::transcribing:
        return QCoreApplication::translate("StatusText", "Transcribing...");
    case TranscriptionState::inserting:
        return QCoreApplication::translate("StatusText", "Inserting...");
    }
    Q_UNREACHABLE();
}

QString recordingModeText(RecordingMode mode)
{
    switch (mode) {
    case RecordingMode::holdToTalk:
        return QCoreApplication::translate("StatusText", "Hold to Talk");
    case RecordingMode::toggle:
        return QCoreApplication::translate("StatusText", "Toggle");
    }
    Q_UNREACHABLE();
}

QString percentText(double progress)
{
    return u"%1%"_s.arg(int(progress * 100));
}

} // namespace Velloro
