#include "Views/StatusText.h"

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

} // namespace Velloro
