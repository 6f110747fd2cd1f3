#include "Views/Shared/HotkeyProblem.h"

#include <QCoreApplication>

namespace Velloro {

namespace {

QString text(const char *source)
{
    return QCoreApplication::translate("HotkeyProblem", source);
}

QString cause(int32_t status, const QString &hotkey)
{
    switch (status) {
    case HotkeyStatus::taken:
        return text(QT_TRANSLATE_NOOP("HotkeyProblem", "%1 is taken by another program."))
            .arg(hotkey);
    case HotkeyStatus::notOnKeyboard:
        return text(QT_TRANSLATE_NOOP("HotkeyProblem", "No connected keyboard has %1."))
            .arg(hotkey);
    case HotkeyStatus::declined:
        return text(QT_TRANSLATE_NOOP("HotkeyProblem",
                                      "%1 was not confirmed in the desktop's dialog."))
            .arg(hotkey);
    default:
        return text(QT_TRANSLATE_NOOP("HotkeyProblem", "%1 could not be registered (error %2)."))
            .arg(hotkey, QString::number(status));
    }
}

} // namespace

QString hotkeyProblem(std::optional<int32_t> status, const QString &hotkey,
                      HotkeyProblemPlace place)
{
    if (!status || status == HotkeyStatus::pending)
        return {};
    // No other combination would help there.
    if (status == HotkeyStatus::unavailable) {
        return text(QT_TRANSLATE_NOOP("HotkeyProblem",
                                      "This desktop offers no hotkey. Bind the command "
                                      "“velloro --toggle” in its keyboard settings."));
    }
    const QString remedy = place == HotkeyProblemPlace::recorder
        ? text(QT_TRANSLATE_NOOP("HotkeyProblem", "Choose another combination."))
        : text(QT_TRANSLATE_NOOP("HotkeyProblem", "Choose another hotkey in Settings."));
    return cause(*status, hotkey) + u' ' + remedy;
}

QString hotkeyLimits(HotkeyAbilities abilities)
{
    if (!abilities.coversAllWindows) {
        return text(
            QT_TRANSLATE_NOOP("HotkeyProblem",
                              "On this desktop the hotkey is seen over X11 windows only. For "
                              "the others, bind the command “velloro --toggle” in the "
                              "desktop's keyboard settings."));
    }
    if (!abilities.tellsReleases) {
        return text(QT_TRANSLATE_NOOP("HotkeyProblem",
                                      "This desktop does not tell when a key is released. In hold "
                                      "mode, too, one press starts the recording and the next one "
                                      "ends it."));
    }
    return {};
}

} // namespace Velloro
