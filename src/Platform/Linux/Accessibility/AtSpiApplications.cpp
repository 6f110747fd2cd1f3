#include "Platform/Linux/Accessibility/AtSpiApplications.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Accessibility/AtSpiBus.h"
#include "Platform/Linux/Desktop/DBusCall.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusPendingReply>
#include <QElapsedTimer>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

/// For the bus itself, which answers at once unless it is gone.
constexpr auto busTimeout = 250ms;
constexpr auto withoutEnd = std::chrono::milliseconds::max();

const QString daemonService = u"org.freedesktop.DBus"_s;
const QString rootPath = u"/org/a11y/atspi/accessible/root"_s;

} // namespace

AtSpiApplications::AtSpiApplications(AtSpiBus &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
{
    for (const auto signal :
         {&AtSpiBus::focusGained, &AtSpiBus::focusLost, &AtSpiBus::windowActivated})
        connect(&bus, signal, this,
                [this](const AtSpiReference &object) { learn(object.service); });
    connect(&bus, &AtSpiBus::serviceGone, this, &AtSpiApplications::forget);
    connect(&bus, &AtSpiBus::disconnected, this, &AtSpiApplications::forgetAll);
}

QDBusMessage AtSpiApplications::call(const AtSpiReference &object, const QString &interface,
                                     const QString &method, const QVariantList &arguments)
{
    if (isUnresponsive(object.service) || m_allowance.remaining() <= 0ms) {
        return QDBusMessage::createError(QDBusError::NoReply, u"The application is not asked"_s);
    }
    QElapsedTimer timer;
    timer.start();
    QDBusMessage reply = m_bus.call(object, interface, method, arguments, m_allowance.remaining());
    spend(object.service, std::chrono::milliseconds(timer.elapsed()));
    if (DBusCall::isTimeout(reply))
        probe(object.service);
    return reply;
}

QVariant AtSpiApplications::property(const AtSpiReference &object, const QString &interface,
                                     const QString &name)
{
    return DBusCall::property(call(object, DBusCall::properties, u"Get"_s, {interface, name}));
}

AtSpiReference AtSpiApplications::parentOf(const AtSpiReference &object)
{
    const QVariant value = property(object, u"org.a11y.atspi.Accessible"_s, u"Parent"_s);
    if (!value.canConvert<QDBusArgument>())
        return {};
    const auto argument = value.value<QDBusArgument>();
    AtSpiReference parent;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> parent.service >> path;
    argument.endStructure();
    parent.path = path.path();
    return parent;
}

void AtSpiApplications::spend(const QString &service, std::chrono::milliseconds elapsed)
{
    m_allowance.spend(elapsed);
    if (m_allowance.remaining() <= 0ms)
        probe(service);
}

bool AtSpiApplications::isUnresponsive(const QString &service) const
{
    return m_unresponsive.contains(service);
}

/// Leaves the application alone until it has answered one more question, however late.
void AtSpiApplications::probe(const QString &service)
{
    if (!m_bus.isConnected() || service.isEmpty() || isUnresponsive(service))
        return;
    m_unresponsive.insert(service);
    DBusCall::whenAnswered(
        m_bus.send({service, rootPath}, u"org.a11y.atspi.Accessible"_s, u"GetRole"_s, {},
                   withoutEnd),
        this, [this, service](const QDBusMessage &) { m_unresponsive.remove(service); });
}

/// Asks the bus for the process behind a name, so that the answer is there when it is needed.
void AtSpiApplications::learn(const QString &service)
{
    if (!m_bus.isConnected() || service.isEmpty() || m_processes.contains(service))
        return;
    m_processes.insert(service,
                       m_bus.send({daemonService, u"/org/freedesktop/DBus"_s}, daemonService,
                                  u"GetConnectionUnixProcessID"_s, {service}, busTimeout));
}

void AtSpiApplications::forget(const QString &service)
{
    m_processes.remove(service);
    m_toolkits.remove(service);
    m_unresponsive.remove(service);
}

void AtSpiApplications::forgetAll()
{
    m_processes.clear();
    m_toolkits.clear();
    m_unresponsive.clear();
}

pid_t AtSpiApplications::processOf(const QString &service)
{
    learn(service);
    const auto known = m_processes.find(service);
    if (known == m_processes.end())
        return -1;
    if (!known->isFinished()) {
        if (m_allowance.remaining() <= 0ms)
            return -1;
        QElapsedTimer timer;
        timer.start();
        known->waitForFinished();
        spend({}, std::chrono::milliseconds(timer.elapsed()));
    }
    const QDBusPendingReply<uint> reply = *known;
    if (reply.isError()) {
        m_processes.erase(known);
        return -1;
    }
    return static_cast<pid_t>(reply.value());
}

QString AtSpiApplications::toolkitOf(const QString &service)
{
    const auto known = m_toolkits.constFind(service);
    if (known != m_toolkits.constEnd())
        return *known;
    const QVariant name
        = property({service, rootPath}, u"org.a11y.atspi.Application"_s, u"ToolkitName"_s);
    if (!name.isValid())
        return {};
    return *m_toolkits.insert(service, name.toString());
}

} // namespace Velloro
