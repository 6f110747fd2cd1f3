#include "Platform/Linux/Desktop/SessionBus.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/DBusGreeting.h"

#include <QByteArray>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 1s;
constexpr auto variable = "DBUS_SESSION_BUS_ADDRESS";

QString address()
{
    const QString named = qEnvironmentVariable(variable);
    if (!named.isEmpty())
        return named;
    // Where the desktop's own bus is by default. None is started here.
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return folder.isEmpty() ? QString() : u"unix:path=%1/bus"_s.arg(folder);
}

bool answers()
{
    DBusGreeting greeting(address(), patience);
    if (greeting.waitForAnswer(patience))
        return true;
    Log::line(u"SessionBus", u"The session bus does not answer"_s);
    // The toolkit uses the bus, too, and would wait for it. There is nothing to connect to; the
    // process keeps to this, while programs that it starts have what it was started with.
    const bool isNamed = qEnvironmentVariableIsSet(variable);
    const QByteArray name = qgetenv(variable);
    qputenv(variable, "unix:path=/dev/null");
    (void)QDBusConnection::sessionBus();
    if (isNamed)
        qputenv(variable, name);
    else
        qunsetenv(variable);
    return false;
}

} // namespace

QDBusConnection SessionBus::connection()
{
    [[maybe_unused]] static const bool isAsked = answers();
    return QDBusConnection::sessionBus();
}

} // namespace Velloro
