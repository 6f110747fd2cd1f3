#pragma once

#include "Platform/UserNotifications.h"

#include <QCoreApplication>
#include <QHash>
#include <chrono>
#include <functional>

namespace Velloro {

/// Tells the user with a notification why a press of the hotkey led to no dictation, or a dictation
/// to no text, and where that is mended or the words are. Each cause is told at most once a minute;
/// what became of words that were spoken is always told. Main thread only.
class DictationNotices
{
    Q_DECLARE_TR_FUNCTIONS(DictationNotices)

public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Clock = std::function<TimePoint()>;

    enum class Cause {
        modelMissing,    ///< The detail is the preset's name.
        modelDamaged,    ///< The detail is the preset's name.
        modelOnItsWay,   ///< The preset's model is being downloaded.
        modelLoadFailed, ///< The detail is the error's description.
        microphoneRefused,
        microphoneFailed, ///< The detail is the error's description.
        hotkeyTaken,      ///< By the field that records a new one. The detail is the combination.
        keyboardTaken,    ///< By the menu or prompt of another program.
        wordsKept,        ///< Recognised words were not typed; they are in the history.
        wordsNotPasted,   ///< The same, since another program kept the clipboard.
        wordsLeftToPaste, ///< No paste stroke could be sent; they are on the clipboard.
        notRecognised,    ///< The detail is the error's description.
    };

    /// `userNotifications` outlives the notices.
    explicit DictationNotices(UserNotifications &userNotifications,
                              Clock clock = &std::chrono::steady_clock::now);

    void tell(Cause cause, const QString &detail = {});

private:
    [[nodiscard]] static QString text(Cause cause, const QString &detail);

    UserNotifications &m_userNotifications;
    Clock m_clock;
    QHash<Cause, TimePoint> m_lastTold;
};

} // namespace Velloro
