#pragma once

#include "Core/Domain/DomainTypes.h"

#include <QtQml/qqml.h>

/// Makes the enumerations of the domain known to QML: `Domain.RecordingMode.toggle`.
namespace Velloro::QmlDomain {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(Velloro)
QML_NAMED_ELEMENT(Domain)
} // namespace Velloro::QmlDomain
