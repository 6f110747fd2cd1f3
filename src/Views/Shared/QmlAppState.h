#pragma once

#include "Core/State/AppState.h"

#include <QtQml/qqml.h>

namespace Velloro {

/// Makes the application state known to QML as `AppState`.
struct QmlAppState
{
    Q_GADGET
    QML_FOREIGN(Velloro::AppState)
    QML_NAMED_ELEMENT(AppState)
    QML_UNCREATABLE("Made at start-up")
};

} // namespace Velloro
