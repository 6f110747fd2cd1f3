#include "Platform/Linux/Desktop/DBusLockState.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/DBusCall.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QVariantMap>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 5s;

/// Each is the name of the service and of its interface; the object has the same name.
constexpr const char *screenSavers[] = {"org.freedesktop.ScreenSaver", "org.gnome.ScreenSaver",
                                        "org.cinnamon.ScreenSaver", "org.mate.ScreenSaver",
                                        "org.xfce.ScreenSaver"};

/// Blanks the screen without locking it where the user wants that, and tells the login manager of
/// every lock.
const QString blankingScreenSaver = u"org.gnome.ScreenSaver"_s;

const QString connectionName = u"velloro-login"_s;
const QString login = u"org.freedesktop.login1"_s;
const QString loginPath = u"/org/freedesktop/login1"_s;
const QString loginManager = u"org.freedesktop.login1.Manager"_s;
const QString loginSession = u"org.freedesktop.login1.Session"_s;
const QString lockedHint = u"LockedHint"_s;
using DBusCall::properties;

QDBusMessage getProperty(const QString &path, const QString &name)
{
    return DBusCall::makeGet(login, path, loginSession, name);
}

} // namespace

DBusLockState::DBusLockState(const QDBusConnection &sessionBus, const QString &systemBusAddress)
    : m_sessionBus(sessionBus)
    , m_greeting(std::make_unique<DBusGreeting>(systemBusAddress, patience))
{
    for (const char *name : screenSavers)
        watchScreenSaver(QString::fromLatin1(name));
    connect(m_greeting.get(), &DBusGreeting::finished, this,
            [this, systemBusAddress](bool answers) {
                if (!answers)
                    return;
                m_systemBus = QDBusConnection::connectToBus(systemBusAddress, connectionName);
                findSession();
            });
}

DBusLockState::~DBusLockState()
{
    m_systemBus = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(connectionName);
}

bool DBusLockState::isLocked() const
{
    const bool isBlanked = m_isHintKnown && m_locks.contains(blankingScreenSaver);
    return m_locks.size() > (isBlanked ? 1 : 0);
}

QString DBusLockState::defaultSystemBusAddress()
{
    return qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS",
                                u"unix:path=/run/dbus/system_bus_socket"_s);
}

void DBusLockState::watchScreenSaver(const QString &name)
{
    // From whichever sender and object: the interface says who it is.
    m_sessionBus.connect(QString(), QString(), name, u"ActiveChanged"_s, this,
                         SLOT(activeChanged(QDBusMessage)));
    const QString bus = u"org.freedesktop.DBus"_s;
    m_sessionBus.connect(bus, QString(), bus, u"NameOwnerChanged"_s, {name}, QString(), this,
                         SLOT(ownerChanged(QString, QString, QString)));
    askScreenSaver(name);
}

void DBusLockState::askScreenSaver(const QString &name)
{
    const QString path = u'/' + QString(name).replace(u'.', u'/');
    QDBusMessage call = DBusCall::make(name, path, name, u"GetActive"_s);
    call.setAutoStartService(false);
    ask(m_sessionBus, call,
        [this, name](const QVariant &active) { setLocked(name, active.toBool()); });
}

void DBusLockState::activeChanged(const QDBusMessage &message)
{
    setLocked(message.interface(), message.arguments().value(0).toBool());
}

void DBusLockState::ownerChanged(const QString &name, const QString &, const QString &now)
{
    // One that has ended holds no lock; a new one may have come with one.
    setLocked(name, false);
    if (!now.isEmpty())
        askScreenSaver(name);
}

void DBusLockState::findSession()
{
    // The login manager's name for the caller's session, which its signals do not use.
    ask(m_systemBus, getProperty(loginPath + u"/session/auto"_s, u"Id"_s),
        [this](const QVariant &id) {
            const QDBusMessage call
                = DBusCall::make(login, loginPath, loginManager, u"GetSession"_s,
                                 {id.value<QDBusVariant>().variant().toString()});
            ask(m_systemBus, call, [this](const QVariant &path) {
                watchSession(path.value<QDBusObjectPath>().path());
            });
        });
}

void DBusLockState::watchSession(const QString &path)
{
    m_systemBus.connect(QString(), path, properties, u"PropertiesChanged"_s, this,
                        SLOT(sessionPropertiesChanged(QDBusMessage)));
    ask(m_systemBus, getProperty(path, lockedHint),
        [this](const QVariant &hint) { setHint(hint.value<QDBusVariant>().variant().toBool()); });
}

void DBusLockState::sessionPropertiesChanged(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.value(0).toString() != loginSession)
        return;
    const auto changed = qdbus_cast<QVariantMap>(arguments.value(1));
    if (const auto hint = changed.constFind(lockedHint); hint != changed.constEnd())
        setHint(hint->toBool());
}

void DBusLockState::ask(const QDBusConnection &bus, const QDBusMessage &call,
                        const AnswerHandler &handler)
{
    DBusCall::whenAnswered(bus.asyncCall(call), this, [handler](const QDBusMessage &reply) {
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
            handler(reply.arguments().constFirst());
    });
}

void DBusLockState::setHint(bool isLocked)
{
    m_isHintKnown = true;
    setLocked(login, isLocked);
}

void DBusLockState::setLocked(const QString &who, bool saysLocked)
{
    const bool wasLocked = isLocked();
    if (saysLocked)
        m_locks.insert(who);
    else
        m_locks.remove(who);
    if (isLocked() && !wasLocked)
        Q_EMIT locked();
}

} // namespace Velloro
