#pragma once

#include <QDBusConnection>

namespace Velloro {

/// The user's session bus.
class SessionBus
{
public:
    /// The process's connection to the bus; a connection that isn't connected when there is no bus,
    /// or it hangs. Until the bus has once answered, a call waits for it, a second at most. Main
    /// thread.
    [[nodiscard]] static QDBusConnection connection();
};

} // namespace Velloro
