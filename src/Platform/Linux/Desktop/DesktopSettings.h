#pragma once

#include "Platform/SystemSettings.h"

#include <QStringList>

namespace Velloro {

/// The settings programs of GNOME, KDE and Xfce, tried in this order by which desktop is running.
class DesktopSettings final : public SystemSettings
{
public:
    [[nodiscard]] bool openPage(SettingsPage page) override;

    /// The command lines to try, best first, where these names are taken on the session bus.
    [[nodiscard]] static QList<QStringList> commands(SettingsPage page,
                                                     const QStringList &busNames);
};

} // namespace Velloro
