#include "Views/Shared/HotkeyProblem.h"

#include "Platform/HotkeyRegistration.h"

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
    default:
        return text(QT_TRANSLATE_NOOP("HotkeyProblem", "%1 could not be registered (error %2)."))
            .arg(hotkey, QString::number(status));
    }
}

} // namespace

QString hotkeyProblem(std::optional<int32_t> status, const QString &hotkey,
                      HotkeyProblemPlace place)
{
    if (!status)
        return {};
    // No other combination would help there.
    if (status == HotkeyStatus::unavailable) {
        return text(QT_TRANSLATE_NOOP("HotkeyProblem",
                                      "Hotkeys need an X11 session. Log in to one to use %1."))
            .arg(hotkey);
    }
    const QString remedy = place == HotkeyProblemPlace::recorder
        ? text(QT_TRANSLATE_NOOP("HotkeyProblem", "Choose another combination."))
        : text(QT_TRANSLATE_NOOP("HotkeyProblem", "Choose another hotkey in Settings."));
    return cause(*status, hotkey) + u' ' + remedy;
}

} // namespace Velloro
