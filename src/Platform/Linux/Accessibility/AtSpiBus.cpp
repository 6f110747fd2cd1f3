#include "Platform/Linux/Accessibility/AtSpiBus.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Platform/Linux/Accessibility/AtSpiLauncher.h"
#include "Platform/Linux/Desktop/DBusCall.h"

#include <QDBusError>
#include <QUuid>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

/// For the registry, which may first have to be started.
constexpr auto registryTimeout = 10s;

const QString daemonService = u"org.freedesktop.DBus"_s;
const QString registryService = u"org.a11y.atspi.Registry"_s;

QDBusMessage methodCall(const AtSpiReference &object, const QString &interface,
                        const QString &method, const QVariantList &arguments)
{
    return DBusCall::make(object.service, object.path, interface, method, arguments);
}

} // namespace

AtSpiBus::AtSpiBus(AtSpiLauncher &launcher, QObject *parent)
    : QObject(parent)
    , m_launcher(launcher)
{
    connect(&launcher, &AtSpiLauncher::busFound, this, &AtSpiBus::connectTo);
    connect(&launcher, &AtSpiLauncher::sessionBusLost, this, &AtSpiBus::disconnect);
}

AtSpiBus::~AtSpiBus()
{
    if (m_bus) {
        m_bus.reset();
        QDBusConnection::disconnectFromBus(m_busName);
    }
}

void AtSpiBus::connectTo(const QString &address)
{
    disconnect();
    // A name of a connection that is being closed is unavailable for a moment.
    m_busName = u"velloro-accessibility-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces);
    QDBusConnection bus = QDBusConnection::connectToBus(address, m_busName);
    if (!bus.isConnected()) {
        QDBusConnection::disconnectFromBus(m_busName);
        m_launcher.findAgain();
        return;
    }
    m_bus = bus;

    bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                u"Disconnected"_s, this, SLOT(onBusLost()));
    bus.connect(QString(), QString(), u"org.a11y.atspi.Event.Object"_s, u"StateChanged"_s,
                {u"focused"_s}, QString(), this, SLOT(onFocusChanged(QDBusMessage)));
    const QString windowInterface = u"org.a11y.atspi.Event.Window"_s;
    bus.connect(QString(), QString(), windowInterface, u"Activate"_s, this,
                SLOT(onWindowActivated(QDBusMessage)));
    bus.connect(QString(), QString(), windowInterface, u"Deactivate"_s, this,
                SLOT(onWindowDeactivated(QDBusMessage)));
    bus.connect(daemonService, u"/org/freedesktop/DBus"_s, daemonService, u"NameOwnerChanged"_s,
                this, SLOT(onOwnerChanged(QString, QString, QString)));

    // Applications send only the events that somebody registered for.
    const AtSpiReference registry{registryService, u"/org/a11y/atspi/registry"_s};
    for (const QString &event :
         {u"object:state-changed:focused"_s, u"window:activate"_s, u"window:deactivate"_s}) {
        (void)send(registry, registryService, u"RegisterEvent"_s, {event, QStringList(), QString()},
                   registryTimeout);
    }
    Q_EMIT connected();
}

void AtSpiBus::disconnect()
{
    if (!m_bus)
        return;
    m_bus.reset();
    QDBusConnection::disconnectFromBus(m_busName);
    Q_EMIT disconnected();
}

void AtSpiBus::onBusLost()
{
    if (!m_bus || m_bus->isConnected())
        return;
    Log::line(u"Accessibility", u"Lost the accessibility bus"_s);
    disconnect();
    m_launcher.findAgain();
}

void AtSpiBus::onFocusChanged(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (!m_bus || arguments.size() < 2 || arguments.at(0).toString() != u"focused")
        return;
    const AtSpiReference object{message.service(), message.path()};
    if (arguments.at(1).toInt() != 0)
        Q_EMIT focusGained(object);
    else
        Q_EMIT focusLost(object);
}

void AtSpiBus::onWindowActivated(const QDBusMessage &message)
{
    if (m_bus)
        Q_EMIT windowActivated({message.service(), message.path()});
}

void AtSpiBus::onWindowDeactivated(const QDBusMessage &message)
{
    if (m_bus)
        Q_EMIT windowDeactivated({message.service(), message.path()});
}

void AtSpiBus::onOwnerChanged(const QString &service, const QString &, const QString &newOwner)
{
    if (m_bus && newOwner.isEmpty())
        Q_EMIT serviceGone(service);
}

QDBusMessage AtSpiBus::call(const AtSpiReference &object, const QString &interface,
                            const QString &method, const QVariantList &arguments,
                            std::chrono::milliseconds timeout)
{
    const QDBusMessage message = methodCall(object, interface, method, arguments);
    if (!m_bus) {
        return message.createErrorReply(QDBusError::Disconnected, u"No accessibility bus"_s);
    }
    return m_bus->call(message, QDBus::Block, DBusCall::milliseconds(timeout));
}

QDBusPendingCall AtSpiBus::send(const AtSpiReference &object, const QString &interface,
                                const QString &method, const QVariantList &arguments,
                                std::chrono::milliseconds timeout)
{
    if (!m_bus) {
        return QDBusPendingCall::fromError(
            QDBusError(QDBusError::Disconnected, u"No accessibility bus"_s));
    }
    return m_bus->asyncCall(methodCall(object, interface, method, arguments),
                            DBusCall::milliseconds(timeout));
}

} // namespace Velloro
