#include "Platform/Linux/Accessibility/AtSpiBus.h"

#include "Base/Log.h"
#include "Platform/Linux/Desktop/DBusGreeting.h"
#include "Platform/Linux/Desktop/SessionBus.h"

#include <QCoreApplication>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QUuid>
#include <algorithm>
#include <limits>
#include <utility>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

/// What all calls of one turn may take together; leaves the pasteboard, which is used where they
/// don't suffice, its time below half a second.
constexpr auto allowance = 250ms;
/// For the bus itself, which answers at once unless it is gone.
constexpr auto busTimeout = 250ms;
/// For the launcher, which may first have to be started.
constexpr auto launcherTimeout = 10s;
constexpr auto firstAnswerTimeout = 1s;
/// For the sign of life before the bus is connected to, and how long that is waited for at first.
constexpr auto greetingTimeout = 30s;
constexpr auto firstGreetingTimeout = 300ms;
constexpr auto shortestRetry = 500ms;
constexpr auto longestRetry = 30s;

const QString daemonService = QStringLiteral("org.freedesktop.DBus");
const QString daemonPath = QStringLiteral("/org/freedesktop/DBus");
const QString launcherService = QStringLiteral("org.a11y.Bus");
const QString launcherPath = QStringLiteral("/org/a11y/bus");
const QString statusInterface = QStringLiteral("org.a11y.Status");
const QString enabledProperty = QStringLiteral("IsEnabled");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString registryService = QStringLiteral("org.a11y.atspi.Registry");
const QString rootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
const QString localPath = QStringLiteral("/org/freedesktop/DBus/Local");
const QString localInterface = QStringLiteral("org.freedesktop.DBus.Local");

int milliseconds(std::chrono::milliseconds duration)
{
    return static_cast<int>(std::clamp<int64_t>(duration.count(), 0,
                                                std::numeric_limits<int>::max()));
}

QDBusMessage methodCall(const AtSpiReference &object, const QString &interface,
                        const QString &method, const QVariantList &arguments)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(object.service, object.path, interface, method);
    message.setArguments(arguments);
    return message;
}

bool isTimeout(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ErrorMessage)
        return false;
    const QDBusError::ErrorType type = QDBusError(reply).type();
    return type == QDBusError::NoReply || type == QDBusError::Timeout
           || type == QDBusError::TimedOut;
}

} // namespace

AtSpiBus::AtSpiBus(QObject *parent)
    : QObject(parent)
    , m_session(SessionBus::connection())
    , m_retryDelay(shortestRetry)
{
    m_retry.setSingleShot(true);
    QObject::connect(&m_retry, &QTimer::timeout, this, &AtSpiBus::ask);
    if (!m_session.isConnected())
        return;
    m_session.connect(QString(), localPath, localInterface, QStringLiteral("Disconnected"), this,
                      SLOT(onSessionBusLost()));
    m_session.connect(QString(), launcherPath, propertiesInterface,
                      QStringLiteral("PropertiesChanged"), this,
                      SLOT(onStatusChanged(QString, QVariantMap, QStringList)));

    m_launcherWatcher = std::make_unique<QDBusServiceWatcher>(
        launcherService, m_session, QDBusServiceWatcher::WatchForOwnerChange);
    QObject::connect(m_launcherWatcher.get(), &QDBusServiceWatcher::serviceRegistered, this,
                     &AtSpiBus::ask);
    QObject::connect(m_launcherWatcher.get(), &QDBusServiceWatcher::serviceUnregistered, this,
                     [this] {
                         m_enabledQuestion.reset();
                         m_isEnabled = false;
                         retryLater();
                     });
    ask();
}

AtSpiBus::~AtSpiBus()
{
    if (m_bus) {
        m_bus.reset();
        QDBusConnection::disconnectFromBus(m_busName);
    }
}

bool AtSpiBus::isUsable()
{
    if (!m_waitedForAnswers) {
        m_waitedForAnswers = true;
        finish(m_addressQuestion, &AtSpiBus::takeAddress);
        finish(m_enabledQuestion, &AtSpiBus::takeEnabled);
        if (m_greeting)
            m_greeting->waitForAnswer(firstGreetingTimeout);
        if (!m_session.isConnected() || m_launcherHangs
            || (m_greeting && !m_greeting->isFinished()))
            keepToolkitOff();
    }
    return m_isEnabled && m_bus.has_value() && m_bus->isConnected();
}

void AtSpiBus::enable()
{
    const AtSpiReference launcher{launcherService, launcherPath};
    m_session.asyncCall(
        methodCall(launcher, propertiesInterface, QStringLiteral("Set"),
                   {statusInterface, enabledProperty,
                    QVariant::fromValue(QDBusVariant(QVariant(true)))}),
        milliseconds(launcherTimeout));
    // Not every launcher tells of a change that it was asked for.
    ask();
}

/// Asks the launcher where the bus is, if that is not known, and whether it is enabled. The first
/// answers may be waited for, so their time is short; an answer that comes late is asked for again.
void AtSpiBus::ask()
{
    if (!m_session.isConnected())
        return;
    const AtSpiReference launcher{launcherService, launcherPath};
    const int timeout = milliseconds(m_waitedForAnswers ? launcherTimeout
                                                        : std::chrono::milliseconds(
                                                            firstAnswerTimeout));
    if (!m_bus && !m_addressQuestion && !m_greeting) {
        await(m_addressQuestion,
              m_session.asyncCall(methodCall(launcher, launcherService,
                                             QStringLiteral("GetAddress"), {}),
                                  timeout),
              &AtSpiBus::takeAddress);
    }
    await(m_enabledQuestion,
          m_session.asyncCall(methodCall(launcher, propertiesInterface, QStringLiteral("Get"),
                                         {statusInterface, enabledProperty}),
                              timeout),
          &AtSpiBus::takeEnabled);
}

void AtSpiBus::await(std::unique_ptr<QDBusPendingCallWatcher> &slot, const QDBusPendingCall &call,
                     ReplyHandler handler)
{
    slot = std::make_unique<QDBusPendingCallWatcher>(call);
    QObject::connect(slot.get(), &QDBusPendingCallWatcher::finished, this,
                     [this, &slot, handler] { finish(slot, handler); });
}

void AtSpiBus::finish(std::unique_ptr<QDBusPendingCallWatcher> &slot, ReplyHandler handler)
{
    if (!slot)
        return;
    QDBusPendingCallWatcher *watcher = slot.release();
    watcher->QDBusPendingCall::waitForFinished();
    watcher->disconnect(this);
    watcher->deleteLater();
    (this->*handler)(watcher->reply());
}

void AtSpiBus::takeAddress(const QDBusMessage &reply)
{
    const QString address = reply.arguments().value(0).toString();
    if (reply.type() == QDBusMessage::ReplyMessage && !address.isEmpty())
        greet(address);
    else
        retryLater();
    m_launcherHangs = isTimeout(reply);
}

void AtSpiBus::takeEnabled(const QDBusMessage &reply)
{
    m_isEnabled = reply.type() == QDBusMessage::ReplyMessage
                  && reply.arguments().value(0).value<QDBusVariant>().variant().toBool();
    if (reply.type() == QDBusMessage::ReplyMessage)
        m_retryDelay = shortestRetry;
    else
        retryLater();
}

/// Has the bus connected to when it has shown that it lives.
void AtSpiBus::greet(const QString &address)
{
    m_greeting = new DBusGreeting(address, greetingTimeout, this);
    QObject::connect(m_greeting, &DBusGreeting::finished, this,
                     [this, address](bool isAnswered) {
                         endGreeting();
                         if (isAnswered)
                             connectTo(address);
                         if (!m_bus)
                             retryLater();
                     });
}

void AtSpiBus::endGreeting()
{
    if (!m_greeting)
        return;
    m_greeting->QObject::disconnect(this);
    std::exchange(m_greeting, nullptr)->deleteLater();
}

/// The toolkit, which makes this program's own windows accessible, connects to the bus when the
/// event loop starts, and would wait for one that hangs.
void AtSpiBus::keepToolkitOff()
{
    static constexpr auto variable = "AT_SPI_BUS_ADDRESS";
    Log::line(u"Accessibility", QStringLiteral("The accessibility bus does not answer"));
    if (qEnvironmentVariableIsSet(variable))
        return;
    // There is nothing to connect to; programs that are started later don't inherit this.
    qputenv(variable, "unix:path=/dev/null");
    QTimer::singleShot(0, QCoreApplication::instance(), [] { qunsetenv(variable); });
}

void AtSpiBus::connectTo(const QString &address)
{
    disconnect();
    // A name of a connection that is being closed can't be had again at once.
    m_busName = QStringLiteral("velloro-accessibility-")
                + QUuid::createUuid().toString(QUuid::WithoutBraces);
    QDBusConnection bus = QDBusConnection::connectToBus(address, m_busName);
    if (!bus.isConnected()) {
        QDBusConnection::disconnectFromBus(m_busName);
        return;
    }
    m_bus = bus;
    m_retryDelay = shortestRetry;

    bus.connect(QString(), localPath, localInterface, QStringLiteral("Disconnected"), this,
                SLOT(onBusLost()));
    bus.connect(QString(), QString(), QStringLiteral("org.a11y.atspi.Event.Object"),
                QStringLiteral("StateChanged"), {QStringLiteral("focused")}, QString(), this,
                SLOT(onFocusChanged(QDBusMessage)));
    const QString windowInterface = QStringLiteral("org.a11y.atspi.Event.Window");
    bus.connect(QString(), QString(), windowInterface, QStringLiteral("Activate"), this,
                SLOT(onWindowActivated(QDBusMessage)));
    bus.connect(QString(), QString(), windowInterface, QStringLiteral("Deactivate"), this,
                SLOT(onWindowDeactivated(QDBusMessage)));
    bus.connect(daemonService, daemonPath, daemonService, QStringLiteral("NameOwnerChanged"), this,
                SLOT(onOwnerChanged(QString, QString, QString)));

    // Applications send only the events that somebody registered for.
    const AtSpiReference registry{registryService, QStringLiteral("/org/a11y/atspi/registry")};
    for (const QString &event :
         {QStringLiteral("object:state-changed:focused"), QStringLiteral("window:activate"),
          QStringLiteral("window:deactivate")}) {
        (void)send(registry, registryService, QStringLiteral("RegisterEvent"),
                   {event, QStringList(), QString()}, launcherTimeout);
    }
    Q_EMIT connected();
}

void AtSpiBus::disconnect()
{
    if (!m_bus)
        return;
    m_bus.reset();
    QDBusConnection::disconnectFromBus(m_busName);
    m_processes.clear();
    m_toolkits.clear();
    m_unresponsive.clear();
    Q_EMIT disconnected();
}

void AtSpiBus::retryLater()
{
    if (m_retry.isActive())
        return;
    m_retry.start(m_retryDelay);
    m_retryDelay = std::min<std::chrono::milliseconds>(m_retryDelay * 2, longestRetry);
}

void AtSpiBus::onStatusChanged(const QString &interface, const QVariantMap &changed,
                               const QStringList &invalidated)
{
    if (interface != statusInterface)
        return;
    if (changed.contains(enabledProperty)) {
        m_enabledQuestion.reset();
        m_isEnabled = changed.value(enabledProperty).toBool();
    } else if (invalidated.contains(enabledProperty)) {
        ask();
    }
}

void AtSpiBus::onSessionBusLost()
{
    m_isEnabled = false;
    m_retry.stop();
    endGreeting();
    disconnect();
}

void AtSpiBus::onBusLost()
{
    if (!m_bus || m_bus->isConnected())
        return;
    Log::line(u"Accessibility", QStringLiteral("Lost the accessibility bus"));
    disconnect();
    retryLater();
}

void AtSpiBus::onFocusChanged(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (!m_bus || arguments.size() < 2 || arguments.at(0).toString() != u"focused")
        return;
    const AtSpiReference object{message.service(), message.path()};
    learn(object.service);
    if (arguments.at(1).toInt() != 0)
        Q_EMIT focusGained(object);
    else
        Q_EMIT focusLost(object);
}

void AtSpiBus::onWindowActivated(const QDBusMessage &message)
{
    if (!m_bus)
        return;
    learn(message.service());
    Q_EMIT windowActivated({message.service(), message.path()});
}

void AtSpiBus::onWindowDeactivated(const QDBusMessage &message)
{
    if (m_bus)
        Q_EMIT windowDeactivated({message.service(), message.path()});
}

void AtSpiBus::onOwnerChanged(const QString &service, const QString &, const QString &newOwner)
{
    if (!m_bus || !newOwner.isEmpty())
        return;
    m_processes.remove(service);
    m_toolkits.remove(service);
    m_unresponsive.remove(service);
    Q_EMIT serviceGone(service);
}

QDBusMessage AtSpiBus::call(const AtSpiReference &object, const QString &interface,
                            const QString &method, const QVariantList &arguments)
{
    const QDBusMessage message = methodCall(object, interface, method, arguments);
    openTurn();
    if (!m_bus || isUnresponsive(object.service) || remaining() <= 0ms) {
        return message.createErrorReply(QDBusError::NoReply,
                                        QStringLiteral("The application is not asked"));
    }
    QElapsedTimer timer;
    timer.start();
    QDBusMessage reply = m_bus->call(message, QDBus::Block, milliseconds(remaining()));
    spend(object.service, std::chrono::milliseconds(timer.elapsed()));
    if (isTimeout(reply))
        probe(object.service);
    return reply;
}

QVariant AtSpiBus::property(const AtSpiReference &object, const QString &interface,
                            const QString &name)
{
    const QDBusMessage reply =
        call(object, propertiesInterface, QStringLiteral("Get"), {interface, name});
    if (reply.type() != QDBusMessage::ReplyMessage)
        return {};
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

QDBusPendingCall AtSpiBus::send(const AtSpiReference &object, const QString &interface,
                                const QString &method, const QVariantList &arguments,
                                std::chrono::milliseconds timeout)
{
    if (!m_bus) {
        return QDBusPendingCall::fromError(
            QDBusError(QDBusError::Disconnected, QStringLiteral("No accessibility bus")));
    }
    return m_bus->asyncCall(methodCall(object, interface, method, arguments),
                            milliseconds(timeout));
}

std::chrono::milliseconds AtSpiBus::remaining() const
{
    return std::max<std::chrono::milliseconds>(allowance - m_spent, 0ms);
}

void AtSpiBus::spend(const QString &service, std::chrono::milliseconds elapsed)
{
    openTurn();
    m_spent += elapsed;
    if (remaining() <= 0ms)
        probe(service);
}

bool AtSpiBus::isUnresponsive(const QString &service) const
{
    return m_unresponsive.contains(service);
}

/// The allowance is whole again when the event loop has come round.
void AtSpiBus::openTurn()
{
    if (m_turnIsOpen)
        return;
    m_turnIsOpen = true;
    QTimer::singleShot(0, this, [this] {
        m_turnIsOpen = false;
        m_spent = 0ms;
        ++m_turn;
    });
}

/// Leaves the application alone until it has answered one more question, however late.
void AtSpiBus::probe(const QString &service)
{
    if (!m_bus || service.isEmpty() || isUnresponsive(service))
        return;
    m_unresponsive.insert(service);
    auto *watcher = new QDBusPendingCallWatcher(
        m_bus->asyncCall(methodCall({service, rootPath},
                                    QStringLiteral("org.a11y.atspi.Accessible"),
                                    QStringLiteral("GetRole"), {}),
                         std::numeric_limits<int>::max()),
        this);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, service] {
        watcher->deleteLater();
        m_unresponsive.remove(service);
    });
}

/// Asks the bus for the process behind a name, so that the answer is there when it is needed.
void AtSpiBus::learn(const QString &service)
{
    if (!m_bus || service.isEmpty() || m_processes.contains(service))
        return;
    m_processes.insert(service,
                       send({daemonService, daemonPath}, daemonService,
                            QStringLiteral("GetConnectionUnixProcessID"), {service}, busTimeout));
}

pid_t AtSpiBus::processOf(const QString &service)
{
    learn(service);
    const auto known = m_processes.find(service);
    if (known == m_processes.end())
        return -1;
    if (!known->isFinished()) {
        if (remaining() <= 0ms)
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

QString AtSpiBus::toolkitOf(const QString &service)
{
    const auto known = m_toolkits.constFind(service);
    if (known != m_toolkits.constEnd())
        return *known;
    const QVariant name = property({service, rootPath},
                                   QStringLiteral("org.a11y.atspi.Application"),
                                   QStringLiteral("ToolkitName"));
    if (!name.isValid())
        return {};
    return *m_toolkits.insert(service, name.toString());
}

} // namespace Velloro
