#include "Platform/Linux/Wayland/Hotkeys/KGlobalAccelHotkeys.h"

#include "Platform/Linux/Desktop/DBusCall.h"
#include "Platform/Linux/Wayland/Hotkeys/QtKeys.h"
#include "Platform/Linux/Wayland/WaylandKeymap.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QPointer>
#include <algorithm>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

/// The first repetition comes after the user's delay, of which more is not offered.
constexpr auto longestRepetition = 2s;
constexpr auto patience = 5s;
constexpr auto farewellPatience = 200ms;

const QString service = u"org.kde.kglobalaccel"_s;
const QString component = u"velloro"_s;
const QString action = u"dictate"_s;
/// Names and what the user reads of them in the system's settings.
const QStringList actionId{component, action, u"Velloro"_s, u"Dictate"_s};
/// The keys are set now and to these, whatever the settings have from an earlier time.
constexpr uint presentWithoutLoading = 2 | 4;

QDBusMessage makeCall(const QString &method, const QVariantList &arguments = {})
{
    return DBusCall::make(service, u"/kglobalaccel"_s, u"org.kde.KGlobalAccel"_s, method,
                          arguments);
}

QDBusMessage makeUnregister()
{
    return makeCall(u"unregister"_s, {component, action});
}

bool isOurs(const QDBusMessage &message)
{
    return message.arguments().mid(0, 2) == QVariantList{component, action};
}

} // namespace

KGlobalAccelHotkeys::KGlobalAccelHotkeys(std::shared_ptr<const WaylandKeymap> keymap,
                                         const QDBusConnection &bus)
    : m_keymap(std::move(keymap))
    , m_bus(bus)
    , m_key(longestRepetition)
{
}

KGlobalAccelHotkeys::~KGlobalAccelHotkeys()
{
    if (m_wanted)
        m_bus.asyncCall(makeUnregister(), DBusCall::milliseconds(farewellPatience))
            .waitForFinished();
}

void KGlobalAccelHotkeys::look(std::function<void(bool)> done)
{
    const QString bus = u"org.freedesktop.DBus"_s;
    const QDBusMessage call
        = DBusCall::make(bus, u"/org/freedesktop/DBus"_s, bus, u"NameHasOwner"_s, {service});
    DBusCall::whenAnswered(
        m_bus.asyncCall(call, DBusCall::milliseconds(patience)), this,
        [this, bus, done = std::move(done)](const QDBusMessage &reply) {
            if (reply.type() != QDBusMessage::ReplyMessage
                || !reply.arguments().value(0).toBool()) {
                done(false);
                return;
            }
            // From whichever sender: Qt would wait for the owner of a name.
            const QString interface = u"org.kde.kglobalaccel.Component"_s;
            m_bus.connect(QString(), QString(), interface, u"globalShortcutPressed"_s, this,
                          SLOT(shortcutPressed(QDBusMessage)));
            m_bus.connect(QString(), QString(), interface, u"globalShortcutReleased"_s, this,
                          SLOT(shortcutReleased(QDBusMessage)));
            m_bus.connect(bus, QString(), bus, u"NameOwnerChanged"_s, {service}, QString(), this,
                          SLOT(ownerChanged(QString, QString, QString)));
            connect(m_keymap.get(), &WaylandKeymap::changed, this,
                    &KGlobalAccelHotkeys::bindWanted);
            // Left behind by one that was killed while it recorded a combination.
            block(false);
            done(true);
        });
}

void KGlobalAccelHotkeys::bind(KeyCombination combination)
{
    unbind();
    m_wanted = combination;
    bindWanted();
}

void KGlobalAccelHotkeys::bindWanted()
{
    if (!m_wanted)
        return;
    ++m_requestNumber;
    const QList<int> keys = QtKeys::combinations(*m_wanted, *m_keymap);
    if (keys.isEmpty()) {
        QMetaObject::invokeMethod(
            this, [this] { Q_EMIT statusChanged(HotkeyStatus::notOnKeyboard); },
            Qt::QueuedConnection);
        return;
    }
    m_bus.asyncCall(makeCall(u"doRegister"_s, {actionId}));
    const QDBusMessage call
        = makeCall(u"setShortcut"_s, {actionId, QVariant::fromValue(keys), presentWithoutLoading});
    DBusCall::whenAnswered(
        m_bus.asyncCall(call, DBusCall::milliseconds(patience)), this,
        [this, number = m_requestNumber, first = keys.first()](const QDBusMessage &reply) {
            if (number != m_requestNumber)
                return;
            if (reply.type() != QDBusMessage::ReplyMessage) {
                Q_EMIT statusChanged(HotkeyStatus::unavailable);
                return;
            }
            // In place of a combination that somebody else has there is a 0.
            const auto had = qdbus_cast<QList<int>>(reply.arguments().value(0));
            Q_EMIT statusChanged(had.contains(first) ? 0 : HotkeyStatus::taken);
        });
}

void KGlobalAccelHotkeys::unbind()
{
    ++m_requestNumber;
    if (std::exchange(m_wanted, std::nullopt))
        m_bus.asyncCall(makeUnregister());
    endPress();
}

void KGlobalAccelHotkeys::shortcutPressed(const QDBusMessage &message)
{
    if (!m_wanted || !isOurs(message))
        return;
    switch (m_key.press()) {
    case HeldKey::Press::repeated:
        return;
    case HeldKey::Press::afterLostRelease:
        Q_EMIT released();
        break;
    case HeldKey::Press::first:
        break;
    }
    Q_EMIT pressed();
}

void KGlobalAccelHotkeys::shortcutReleased(const QDBusMessage &message)
{
    if (isOurs(message))
        endPress();
}

void KGlobalAccelHotkeys::ownerChanged(const QString &, const QString &, const QString &now)
{
    endPress();
    if (!now.isEmpty())
        bindWanted();
}

void KGlobalAccelHotkeys::endPress()
{
    if (m_key.release())
        Q_EMIT released();
}

void KGlobalAccelHotkeys::block(bool isBlocked)
{
    m_bus.asyncCall(makeCall(u"blockGlobalShortcuts"_s, {isBlocked}));
}

std::shared_ptr<void> KGlobalAccelHotkeys::letShortcutsThrough()
{
    block(true);
    return {this, [self = QPointer(this)](void *) {
                if (self)
                    self->block(false);
            }};
}

} // namespace Velloro
