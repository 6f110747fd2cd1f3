#include "Platform/Linux/Accessibility/AtSpiLauncher.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/DBusCall.h"
#include "Platform/Linux/Desktop/DBusGreeting.h"
#include "Platform/Linux/Desktop/SessionBus.h"

#include <QCoreApplication>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <algorithm>
#include <utility>

namespace Velloro {

namespace {

using namespace std::chrono_literals;

/// The launcher may first have to be started.
constexpr std::chrono::milliseconds answerTimeout = 10s;
constexpr std::chrono::milliseconds firstAnswerTimeout = 1s;
/// For the sign of life before the bus is connected to, and how long that is waited for at first.
constexpr auto greetingTimeout = 30s;
constexpr auto firstGreetingTimeout = 300ms;
constexpr auto shortestRetry = 500ms;
constexpr auto longestRetry = 30s;

const QString service = u"org.a11y.Bus"_s;
const QString path = u"/org/a11y/bus"_s;
const QString statusInterface = u"org.a11y.Status"_s;
const QString enabledProperty = u"IsEnabled"_s;

} // namespace

AtSpiLauncher::AtSpiLauncher(QObject *parent)
    : QObject(parent)
    , m_session(SessionBus::connection())
    , m_retryDelay(shortestRetry)
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &AtSpiLauncher::ask);
    if (!m_session.isConnected())
        return;
    m_session.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                      u"Disconnected"_s, this, SLOT(onSessionBusLost()));
    m_session.connect(QString(), path, DBusCall::properties, u"PropertiesChanged"_s, this,
                      SLOT(onStatusChanged(QString, QVariantMap, QStringList)));

    m_serviceWatcher = std::make_unique<QDBusServiceWatcher>(
        service, m_session, QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_serviceWatcher.get(), &QDBusServiceWatcher::serviceRegistered, this,
            &AtSpiLauncher::ask);
    connect(m_serviceWatcher.get(), &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        m_enabledQuestion.reset();
        m_isEnabled = false;
        retryLater();
    });
    ask();
}

AtSpiLauncher::~AtSpiLauncher() = default;

void AtSpiLauncher::waitForAnswers()
{
    if (std::exchange(m_waitedForAnswers, true))
        return;
    finish(m_addressQuestion, &AtSpiLauncher::takeAddress);
    finish(m_enabledQuestion, &AtSpiLauncher::takeEnabled);
    if (m_greeting)
        m_greeting->waitForAnswer(firstGreetingTimeout);
    if (!m_session.isConnected() || m_hangs || (m_greeting && !m_greeting->isFinished()))
        keepToolkitOff();
}

void AtSpiLauncher::enable()
{
    m_session.asyncCall(DBusCall::make(service, path, DBusCall::properties, u"Set"_s,
                                       {statusInterface, enabledProperty,
                                        QVariant::fromValue(QDBusVariant(QVariant(true)))}),
                        DBusCall::milliseconds(answerTimeout));
    // Not every launcher tells of a change that it was asked for.
    ask();
}

void AtSpiLauncher::findAgain()
{
    m_isBusFound = false;
    retryLater();
}

/// Asks where the bus is, if that is not known, and whether it is enabled. The first answers may be
/// waited for, so their time is short; an answer that comes late is asked for again.
void AtSpiLauncher::ask()
{
    if (!m_session.isConnected())
        return;
    const int timeout
        = DBusCall::milliseconds(m_waitedForAnswers ? answerTimeout : firstAnswerTimeout);
    if (!m_isBusFound && !m_addressQuestion && !m_greeting) {
        await(m_addressQuestion,
              m_session.asyncCall(DBusCall::make(service, path, service, u"GetAddress"_s), timeout),
              &AtSpiLauncher::takeAddress);
    }
    await(m_enabledQuestion,
          m_session.asyncCall(DBusCall::makeGet(service, path, statusInterface, enabledProperty),
                              timeout),
          &AtSpiLauncher::takeEnabled);
}

void AtSpiLauncher::await(std::unique_ptr<QDBusPendingCallWatcher> &slot,
                          const QDBusPendingCall &call, ReplyHandler handler)
{
    slot = std::make_unique<QDBusPendingCallWatcher>(call);
    connect(slot.get(), &QDBusPendingCallWatcher::finished, this,
            [this, &slot, handler] { finish(slot, handler); });
}

void AtSpiLauncher::finish(std::unique_ptr<QDBusPendingCallWatcher> &slot, ReplyHandler handler)
{
    if (!slot)
        return;
    QDBusPendingCallWatcher *watcher = slot.release();
    watcher->QDBusPendingCall::waitForFinished();
    watcher->disconnect(this);
    watcher->deleteLater();
    (this->*handler)(watcher->reply());
}

void AtSpiLauncher::takeAddress(const QDBusMessage &reply)
{
    const QString address = reply.arguments().value(0).toString();
    if (reply.type() == QDBusMessage::ReplyMessage && !address.isEmpty())
        greet(address);
    else
        retryLater();
    m_hangs = DBusCall::isTimeout(reply);
}

void AtSpiLauncher::takeEnabled(const QDBusMessage &reply)
{
    m_isEnabled = DBusCall::property(reply).toBool();
    if (reply.type() == QDBusMessage::ReplyMessage)
        m_retryDelay = shortestRetry;
    else
        retryLater();
}

/// Has the bus connected to when it has shown that it lives.
void AtSpiLauncher::greet(const QString &address)
{
    m_greeting = new DBusGreeting(address, greetingTimeout, this);
    connect(m_greeting, &DBusGreeting::finished, this, [this, address](bool isAnswered) {
        endGreeting();
        if (!isAnswered)
            return retryLater();
        m_isBusFound = true;
        m_retryDelay = shortestRetry;
        Q_EMIT busFound(address);
    });
}

void AtSpiLauncher::endGreeting()
{
    if (!m_greeting)
        return;
    m_greeting->disconnect(this);
    std::exchange(m_greeting, nullptr)->deleteLater();
}

/// The toolkit, which makes this program's own windows accessible, connects to the bus when the
/// event loop starts, and would wait for one that hangs.
void AtSpiLauncher::keepToolkitOff()
{
    static constexpr auto variable = "AT_SPI_BUS_ADDRESS";
    Log::line(u"Accessibility", u"The accessibility bus does not answer"_s);
    if (qEnvironmentVariableIsSet(variable))
        return;
    // There is nothing to connect to; programs that are started later don't inherit this.
    qputenv(variable, "unix:path=/dev/null");
    QTimer::singleShot(0, QCoreApplication::instance(), [] { qunsetenv(variable); });
}

void AtSpiLauncher::retryLater()
{
    if (m_retry.isActive())
        return;
    m_retry.start(m_retryDelay);
    m_retryDelay = std::min<std::chrono::milliseconds>(m_retryDelay * 2, longestRetry);
}

void AtSpiLauncher::onStatusChanged(const QString &interface, const QVariantMap &changed,
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

void AtSpiLauncher::onSessionBusLost()
{
    m_isEnabled = false;
    m_isBusFound = false;
    m_retry.stop();
    endGreeting();
    Q_EMIT sessionBusLost();
}

} // namespace Velloro
