#include "Views/Shared/PresetPresentation.h"

#include <QCoreApplication>

namespace Velloro::PresetPresentation {

QString title(ModelPreset preset)
{
    switch (preset) {
    case ModelPreset::small:
        return QCoreApplication::translate("PresetPresentation", "Small");
    case ModelPreset::medium:
        return QCoreApplication::translate("PresetPresentation", "Medium");
    case ModelPreset::large:
        return QCoreApplication::translate("PresetPresentation", "Large");
    }
    Q_UNREACHABLE();
}

QString label(ModelPreset preset)
{
    switch (preset) {
    case ModelPreset::small:
        return QCoreApplication::translate("PresetPresentation", "Fast");
    case ModelPreset::medium:
        return QCoreApplication::translate("PresetPresentation", "Balanced");
    case ModelPreset::large:
        return QCoreApplication::translate("PresetPresentation", "Accurate");
    }
    Q_UNREACHABLE();
}

QString symbol(ModelPreset preset)
{
    switch (preset) {
    case ModelPreset::small:
        return QStringLiteral("hare");
    case ModelPreset::medium:
        return QStringLiteral("scalemass");
    case ModelPreset::large:
        return QStringLiteral("checkmark.seal");
    }
    Q_UNREACHABLE();
}

QString tint(ModelPreset preset)
{
    switch (preset) {
    case ModelPreset::small:
        return QStringLiteral("green");
    case ModelPreset::medium:
        return QStringLiteral("orange");
    case ModelPreset::large:
        return QStringLiteral("purple");
    }
    Q_UNREACHABLE();
}

} // namespace Velloro::PresetPresentation
