#include "Views/Shared/PresetPresentation.h"

#include <QCoreApplication>
#include <algorithm>

namespace Velloro::PresetPresentation {

namespace {

struct Presentation
{
    ModelPreset preset;
    const char *title;
    const char *label;
    QStringView symbol;
    QStringView tint;
};

constexpr Presentation presentations[] = {
    {ModelPreset::small, QT_TRANSLATE_NOOP("PresetPresentation", "Small"),
     QT_TRANSLATE_NOOP("PresetPresentation", "Fast"), u"hare", u"green"},
    {ModelPreset::medium, QT_TRANSLATE_NOOP("PresetPresentation", "Medium"),
     QT_TRANSLATE_NOOP("PresetPresentation", "Balanced"), u"scalemass", u"orange"},
    {ModelPreset::large, QT_TRANSLATE_NOOP("PresetPresentation", "Large"),
     QT_TRANSLATE_NOOP("PresetPresentation", "Accurate"), u"checkmark.seal", u"purple"},
};

const Presentation &of(ModelPreset preset)
{
    return *std::ranges::find(presentations, preset, &Presentation::preset);
}

QString translated(const char *text)
{
    return QCoreApplication::translate("PresetPresentation", text);
}

} // namespace

QString title(ModelPreset preset)
{
    return translated(of(preset).title);
}

QString label(ModelPreset preset)
{
    return translated(of(preset).label);
}

QString symbol(ModelPreset preset)
{
    return of(preset).symbol.toString();
}

QString tint(ModelPreset preset)
{
    return of(preset).tint.toString();
}

} // namespace Velloro::PresetPresentation
