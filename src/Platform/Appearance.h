#pragma once

#include <QObject>
#include <cstdint>
#include <optional>

namespace Velloro {

/// How the desktop looks, and how it wants programs to look. Main thread only; nothing here waits.
/// A desktop that answers late is reported by `changed`.
class Appearance : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Whether programs are to be dark.
    [[nodiscard]] virtual bool prefersDark() const = 0;
    /// The user's accent colour as 0xRRGGBB; nothing where the desktop has none.
    [[nodiscard]] virtual std::optional<uint32_t> accentColor() const = 0;
    /// The factor on text sizes that windows do not get from the display's scale already.
    [[nodiscard]] virtual double textScale() const = 0;
    /// Whether the tray is dark, so that its icons are to be light.
    [[nodiscard]] virtual bool isTrayDark() const = 0;
    /// Whether windows blend with what lies behind them.
    [[nodiscard]] virtual bool isCompositing() const = 0;

Q_SIGNALS:
    /// At least one of the values has changed.
    void changed();
};

} // namespace Velloro
