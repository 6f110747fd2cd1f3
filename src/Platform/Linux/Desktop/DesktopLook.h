#pragma once

#include <QObject>
#include <optional>

namespace Velloro {

/// What the display server tells of the desktop's look. Main thread only.
class DesktopLook : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Whether windows are blended with what is behind them.
    [[nodiscard]] virtual bool isCompositing() const = 0;
    /// Whether the factor on text sizes may be a part of the factor by which windows are larger.
    [[nodiscard]] virtual bool scalesWindowsWithText() const = 0;
    /// Whether the display server has a tray, beside the one of the session bus.
    [[nodiscard]] virtual bool hasTray() const = 0;
    /// Whether that tray is dark; nothing where there is none, or one that does not tell.
    [[nodiscard]] virtual std::optional<bool> isTrayDark() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace Velloro
