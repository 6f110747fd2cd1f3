#include "Core/Dictation/DictationNotices.h"

#include "Base/StringLiterals.h"

#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

/// Whoever presses again and again knows by then.
constexpr auto pauseBetween = 1min;

bool isAboutSpokenWords(DictationNotices::Cause cause)
{
    return cause == DictationNotices::Cause::wordsKept
        || cause == DictationNotices::Cause::wordsNotPasted
        || cause == DictationNotices::Cause::wordsLeftToPaste
        || cause == DictationNotices::Cause::notRecognised;
}

} // namespace

DictationNotices::DictationNotices(UserNotifications &userNotifications, Clock clock)
    : m_userNotifications(userNotifications)
    , m_clock(std::move(clock))
{
}

void DictationNotices::tell(Cause cause, const QString &detail)
{
    const TimePoint now = m_clock();
    const auto last = m_lastTold.constFind(cause);
    if (!isAboutSpokenWords(cause) && last != m_lastTold.cend() && now - *last < pauseBetween)
        return;
    m_lastTold.insert(cause, now);
    m_userNotifications.deliver(u"Velloro"_s, text(cause, detail));
}

QString DictationNotices::text(Cause cause, const QString &detail)
{
    switch (cause) {
    case Cause::modelMissing:
        return tr("There is no voice model for the %1 preset yet. Download one in Settings, under "
                  "Model.")
            .arg(detail);
    case Cause::modelDamaged:
        return tr("The voice model of the %1 preset is damaged. Delete it in Settings, under "
                  "Model, "
                  "and download it again.")
            .arg(detail);
    case Cause::modelOnItsWay:
        return tr("The voice model is still being downloaded. You can dictate as soon as it has "
                  "arrived.");
    case Cause::modelLoadFailed:
        return tr("The voice model could not be loaded: %1. Choose another one in Settings, under "
                  "Model, or delete it there and download it again.")
            .arg(detail);
    case Cause::microphoneRefused:
        return tr("Velloro may not use a microphone, or finds none. Connect one, or choose it as "
                  "the input in your desktop's sound settings, and press the hotkey again.");
    case Cause::microphoneFailed:
        return tr("The microphone could not be opened: %1. Check the input in your desktop's sound "
                  "settings.")
            .arg(detail);
    case Cause::hotkeyTaken:
        return tr("%1 was taken as the new hotkey, which was being chosen. Press it again to "
                  "dictate.")
            .arg(detail);
    case Cause::keyboardTaken:
        return tr("Another program has taken the keyboard. Close its menu or prompt before "
                  "recording.");
    case Cause::wordsKept:
        return tr("Your words could not be typed, because the screen was locked or another program "
                  "had taken the keyboard. They are in the history.");
    case Cause::wordsNotPasted:
        return tr("Your words could not be pasted, because another program kept putting something "
                  "else on the clipboard. They are in the history.");
    case Cause::wordsLeftToPaste:
        return tr(
            "Your words could not be typed into this window. They are on the clipboard: paste "
            "them with Ctrl+V.");
    case Cause::notRecognised:
        return tr("Your recording could not be turned into text: %1.").arg(detail);
    }
    Q_UNREACHABLE();
}

} // namespace Velloro
