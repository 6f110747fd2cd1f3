#include "Platform/Linux/Wayland/Hotkeys/PortalHotkeys.h"

#include "Platform/Linux/Desktop/DBusCall.h"
#include "Platform/Linux/Wayland/WaylandKeymap.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

/// A shortcut as it is told to the portal.
struct PortalShortcut
{
    QString id;
    QVariantMap properties;
};

QDBusArgument &operator<<(QDBusArgument &argument, const PortalShortcut &shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, PortalShortcut &shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

namespace {

/// The first call may start the portal, which asks its own helpers first.
constexpr auto patience = 30s;

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;
const QString sessionInterface = u"org.freedesktop.portal.Session"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;
const QString shortcutId = u"dictate"_s;

constexpr uint failed = 2;

} // namespace

PortalHotkeys::PortalHotkeys(std::shared_ptr<const WaylandKeymap> keymap,
                             const QDBusConnection &bus)
    : m_keymap(std::move(keymap))
    , m_bus(bus)
    , m_key(0ms)
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
}

PortalHotkeys::~PortalHotkeys()
{
    unbind();
}

void PortalHotkeys::look(std::function<void(bool)> done)
{
    // From whichever sender: Qt would wait for the owner of a name.
    const QString any;
    m_bus.connect(any, any, requestInterface, u"Response"_s, this,
                  SLOT(requestAnswered(QDBusMessage)));
    m_bus.connect(any, any, sessionInterface, u"Closed"_s, this, SLOT(sessionClosed(QDBusMessage)));
    m_bus.connect(any, path, shortcutsInterface, u"Activated"_s, this,
                  SLOT(shortcutActivated(QDBusMessage)));
    m_bus.connect(any, path, shortcutsInterface, u"Deactivated"_s, this,
                  SLOT(shortcutDeactivated(QDBusMessage)));
    const QString bus = u"org.freedesktop.DBus"_s;
    m_bus.connect(bus, any, bus, u"NameOwnerChanged"_s, {service}, any, this,
                  SLOT(ownerChanged(QString, QString, QString)));

    introduce();
    const QDBusMessage call = DBusCall::makeGet(service, path, shortcutsInterface, u"version"_s);
    DBusCall::whenAnswered(m_bus.asyncCall(call, DBusCall::milliseconds(patience)), this,
                           [done = std::move(done)](const QDBusMessage &reply) {
                               done(DBusCall::property(reply).toUInt() >= 1);
                           });
}

void PortalHotkeys::introduce()
{
    m_bus.asyncCall(DBusCall::make(service, path, u"org.freedesktop.host.portal.Registry"_s,
                                   u"Register"_s, {u"velloro"_s, QVariantMap()}));
}

void PortalHotkeys::bind(KeyCombination combination)
{
    unbind();
    m_wanted = combination;
    m_isSecondTry = false;
    createSession();
}

void PortalHotkeys::unbind()
{
    m_wanted.reset();
    // An open dialog is closed with its request.
    for (const QString &open : m_requests.keys())
        m_bus.asyncCall(DBusCall::make(service, open, requestInterface, u"Close"_s));
    if (!m_session.isEmpty())
        m_bus.asyncCall(DBusCall::make(service, m_session, sessionInterface, u"Close"_s));
    forgetSession();
}

void PortalHotkeys::forgetSession()
{
    m_requests.clear();
    m_session.clear();
    endPress();
}

void PortalHotkeys::createSession()
{
    request(u"CreateSession"_s, {}, {{u"session_handle_token"_s, u"velloro"_s}},
            [this](uint code, const QVariantMap &results) {
                m_session = results.value(u"session_handle"_s).toString();
                if (code == 0 && !m_session.isEmpty())
                    bindShortcuts();
                else
                    Q_EMIT statusChanged(HotkeyStatus::unavailable);
            });
}

void PortalHotkeys::bindShortcuts()
{
    const QList<PortalShortcut> shortcuts{
        {shortcutId,
         {{u"description"_s, tr("Dictate")},
          {u"preferred_trigger"_s, trigger(*m_wanted, *m_keymap)}}}};
    const QString noWindow = u""_s;
    request(
        u"BindShortcuts"_s,
        {QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(shortcuts), noWindow},
        {}, [this](uint code, const QVariantMap &results) {
            const auto bound = qdbus_cast<QList<PortalShortcut>>(results.value(u"shortcuts"_s));
            // The user may also confirm a dialog without the shortcut.
            const bool isBound = code == 0 && !bound.isEmpty();
            Q_EMIT statusChanged(isBound ? 0 : HotkeyStatus::declined);
        });
}

QString PortalHotkeys::trigger(KeyCombination combination, const WaylandKeymap &keymap)
{
    const auto keysyms = keymap.keysyms(combination.keyCode, false);
    char name[64] = "";
    if (keysyms.empty() || xkb_keysym_get_name(keysyms.front(), name, sizeof name) < 0)
        return {};
    QString text;
    for (const auto &[mask, modifier] : {std::pair{ClassicMask::control, u"CTRL+"_s},
                                         {ClassicMask::option, u"ALT+"_s},
                                         {ClassicMask::shift, u"SHIFT+"_s},
                                         {ClassicMask::command, u"LOGO+"_s}}) {
        if (combination.modifiers & mask)
            text += modifier;
    }
    return text + QString::fromLatin1(name);
}

void PortalHotkeys::request(const QString &method, QVariantList arguments, QVariantMap options,
                            const Answer &handler)
{
    // The answer may come before the reply to the call, so its object is named by the caller.
    const QString token = u"velloro%1"_s.arg(++m_lastRequest);
    const QString caller = m_bus.baseService().mid(1).replace(u'.', u'_');
    const QString requestPath = u"%1/request/%2/%3"_s.arg(path, caller, token);
    options[u"handle_token"_s] = token;
    arguments << options;
    m_requests[requestPath] = handler;
    const QDBusMessage call = DBusCall::make(service, path, shortcutsInterface, method, arguments);
    DBusCall::whenAnswered(m_bus.asyncCall(call, DBusCall::milliseconds(patience)), this,
                           [this, requestPath](const QDBusMessage &reply) {
                               if (reply.type() != QDBusMessage::ReplyMessage)
                                   answer(requestPath, failed, {});
                           });
}

void PortalHotkeys::requestAnswered(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    answer(message.path(), arguments.value(0).toUInt(),
           qdbus_cast<QVariantMap>(arguments.value(1)));
}

void PortalHotkeys::answer(const QString &requestPath, uint code, const QVariantMap &results)
{
    if (const Answer handler = m_requests.take(requestPath))
        handler(code, results);
}

void PortalHotkeys::sessionClosed(const QDBusMessage &message)
{
    if (m_session.isEmpty() || message.path() != m_session)
        return;
    forgetSession();
    if (std::exchange(m_isSecondTry, true))
        Q_EMIT statusChanged(HotkeyStatus::unavailable);
    else
        createSession();
}

void PortalHotkeys::ownerChanged(const QString &, const QString &before, const QString &now)
{
    if (!before.isEmpty()) {
        const bool wasBound = !m_session.isEmpty();
        forgetSession();
        if (wasBound)
            Q_EMIT statusChanged(HotkeyStatus::unavailable);
    }
    // One that this program's own call has started has its request already.
    if (now.isEmpty() || !m_requests.isEmpty())
        return;
    introduce();
    if (m_wanted)
        createSession();
}

bool PortalHotkeys::isOurs(const QDBusMessage &message) const
{
    const QVariantList arguments = message.arguments();
    return !m_session.isEmpty() && arguments.value(0).value<QDBusObjectPath>().path() == m_session
        && arguments.value(1).toString() == shortcutId;
}

void PortalHotkeys::shortcutActivated(const QDBusMessage &message)
{
    if (!isOurs(message))
        return;
    m_isSecondTry = false;
    if (m_key.press() == HeldKey::Press::afterLostRelease)
        Q_EMIT released();
    Q_EMIT pressed();
}

void PortalHotkeys::shortcutDeactivated(const QDBusMessage &message)
{
    if (isOurs(message))
        endPress();
}

void PortalHotkeys::endPress()
{
    if (m_key.release())
        Q_EMIT released();
}

} // namespace Velloro
