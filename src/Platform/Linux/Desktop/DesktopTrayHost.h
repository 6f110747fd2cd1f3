#pragma once

#include "Platform/Linux/Desktop/DesktopLook.h"
#include "Platform/TrayHost.h"

#include <QDBusConnection>
#include <memory>

namespace Velloro {

/// The tray of a Linux desktop: the host of StatusNotifierItems on the session bus, else the tray
/// of the display server.
///
/// The toolkit waits for the host's answer when it makes an icon, and decides once which of the
/// two trays it uses. So there is no tray as long as a host that is there does not answer.
class DesktopTrayHost final : public TrayHost
{
    Q_OBJECT

public:
    explicit DesktopTrayHost(std::shared_ptr<DesktopLook> look);

    [[nodiscard]] bool isPresent() const override { return m_isPresent; }

private Q_SLOTS:
    void askWatcher();

private:
    enum class Host { unknown, absent, present };

    void update();

    std::shared_ptr<DesktopLook> m_look;
    QDBusConnection m_bus;
    Host m_host = Host::unknown;
    /// Counts the questions: the answer to an older one is no longer asked for.
    int m_question = 0;
    bool m_isPresent = false;
};

} // namespace Velloro
