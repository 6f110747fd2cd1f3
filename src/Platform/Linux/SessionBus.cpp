#include "Platform/Linux/SessionBus.h"

#include "Core/Log.h"
#include "Platform/Linux/DBusGreeting.h"

#include <QDeadlineTimer>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 1s;
// A bus that hung is left alone for so long.
constexpr auto retryInterval = 30s;

QString address()
{
    const QString named = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!named.isEmpty())
        return named;
    // Where the desktop's own bus is when nobody says so. None is started here.
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return folder.isEmpty() ? QString() : QStringLiteral("unix:path=%1/bus").arg(folder);
}

} // namespace

QDBusConnection SessionBus::connection()
{
    static bool hasAnswered = false;
    static QDeadlineTimer nextTry(0);
    if (!hasAnswered && nextTry.hasExpired()) {
        DBusGreeting greeting(address(), patience);
        hasAnswered = greeting.waitForAnswer(patience);
        if (!hasAnswered) {
            nextTry.setRemainingTime(retryInterval);
            Log::line(u"SessionBus", QStringLiteral("The session bus does not answer"));
        }
    }
    return hasAnswered ? QDBusConnection::sessionBus() : QDBusConnection(QString());
}

} // namespace Velloro
