#pragma once

#include <QDBusConnection>

namespace Velloro {

/// The user's session bus.
class SessionBus
{
public:
    /// The process's connection to the bus. The first call waits for the bus to answer, a second at
    /// most; without an answer the process, with its toolkit, has no session bus. Main thread, and
    /// before the toolkit uses the bus.
    [[nodiscard]] static QDBusConnection connection();
};

} // namespace Velloro
