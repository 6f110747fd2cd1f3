#pragma once

#include "Base/StringLiterals.h"
#include "Platform/Linux/Wayland/Hotkeys/DesktopHotkeys.h"
#include "Support/WaitUntil.h"

#include <QStringList>
#include <gmock/gmock.h>

namespace Velloro {

/// What a way to a hotkey tells, in its order.
class HotkeyEvents : public QStringList
{
public:
    void follow(DesktopHotkeys &hotkeys)
    {
        QObject::connect(&hotkeys, &DesktopHotkeys::pressed, [this] { append(u"press"_s); });
        QObject::connect(&hotkeys, &DesktopHotkeys::released, [this] { append(u"release"_s); });
        QObject::connect(&hotkeys, &DesktopHotkeys::statusChanged,
                         [this](int status) { append(u"status %1"_s.arg(status)); });
    }
    /// Waits for exactly these since the last call, separated by commas.
    [[nodiscard]] ::testing::AssertionResult become(const char16_t *expected)
    {
        const QStringList all = QString::fromUtf16(expected).split(u", "_s, Qt::SkipEmptyParts);
        const bool isSo = waitUntil([&] { return size() >= all.size(); })
            && static_cast<const QStringList &>(*this) == all;
        const QString told = join(u", "_s);
        clear();
        return isSo ? ::testing::AssertionSuccess()
                    : ::testing::AssertionFailure() << told.toStdString();
    }
};

} // namespace Velloro
