#pragma once

#include "Platform/Appearance.h"
#include "Platform/Linux/Desktop/DesktopLook.h"

#include <QDBusMessage>
#include <QProcess>
#include <QVariantMap>
#include <memory>

namespace Velloro {

/// The look of a Linux desktop: from the desktop portal's settings; where there is no portal, from
/// the settings store of the GTK desktops; else from the palette that the platform gave to Qt.
class DesktopAppearance : public Appearance
{
    Q_OBJECT

public:
    explicit DesktopAppearance(std::shared_ptr<DesktopLook> look);
    ~DesktopAppearance() override;

    [[nodiscard]] bool prefersDark() const override;
    [[nodiscard]] std::optional<uint32_t> accentColor() const override { return m_accent; }
    [[nodiscard]] double textScale() const override;
    [[nodiscard]] bool isTrayDark() const override;
    [[nodiscard]] bool isCompositing() const override { return m_look->isCompositing(); }

    /// The text scale that is left where windows are scaled by `pixelRatio`: a desktop may have
    /// made the text scale a part of that already.
    [[nodiscard]] static double remainingTextScale(double textScale, double pixelRatio);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private Q_SLOTS:
    void settingChanged(const QDBusMessage &message);

private:
    void askPortal();
    void askForShell();
    void readSettingsStore();
    void watchSettingsStore();
    void readStoreLines(QProcess &process);
    bool apply(const QString &group, const QString &key, const QVariant &value);

    std::shared_ptr<DesktopLook> m_look;
    std::optional<bool> m_dark;
    std::optional<uint32_t> m_accent;
    double m_textScale = 1;
    /// The shell whose top bar is dark whatever the scheme is.
    bool m_hasDarkShell = false;
    std::unique_ptr<QProcess> m_settingsReader;
    std::unique_ptr<QProcess> m_settingsMonitor;
};

} // namespace Velloro
