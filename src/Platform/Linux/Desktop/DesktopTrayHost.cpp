#include "Platform/Linux/Desktop/DesktopTrayHost.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/DBusCall.h"
#include "Platform/Linux/Desktop/SessionBus.h"

#include <limits>

namespace Velloro {

namespace {

const QString watcher = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

} // namespace

DesktopTrayHost::DesktopTrayHost(std::shared_ptr<DesktopLook> look)
    : m_look(std::move(look))
    , m_bus(SessionBus::connection())
{
    connect(m_look.get(), &DesktopLook::changed, this, &DesktopTrayHost::update);
    // From whichever sender: who owns the names need not be known.
    m_bus.connect(QString(), u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
                  u"NameOwnerChanged"_s, {watcher}, QString(), this, SLOT(askWatcher()));
    m_bus.connect(QString(), watcherPath, watcher, u"StatusNotifierHostRegistered"_s, this,
                  SLOT(askWatcher()));
    askWatcher();
}

void DesktopTrayHost::askWatcher()
{
    constexpr int withoutEnd = std::numeric_limits<int>::max();
    m_host = Host::unknown;
    QDBusMessage message
        = DBusCall::makeGet(watcher, watcherPath, watcher, u"IsStatusNotifierHostRegistered"_s);
    message.setAutoStartService(false);
    DBusCall::whenAnswered(m_bus.asyncCall(message, withoutEnd), this,
                           [this, question = ++m_question](const QDBusMessage &reply) {
                               if (question != m_question)
                                   return;
                               m_host = DBusCall::property(reply).toBool() ? Host::present
                                                                           : Host::absent;
                               update();
                           });
}

void DesktopTrayHost::update()
{
    const bool isPresent = m_host == Host::present || (m_host == Host::absent && m_look->hasTray());
    if (isPresent == m_isPresent)
        return;
    m_isPresent = isPresent;
    if (isPresent)
        Q_EMIT appeared();
}

} // namespace Velloro
