#include "Platform/Linux/Wayland/Gnome/ShellExtension.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/DBusCall.h"

#include <QDBusMetaType>
#include <chrono>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 250ms;

const QString name = u"org.velloro.Shell"_s;
const QString path = u"/org/velloro/Shell"_s;

QDBusMessage make(const QString &method, const QVariantList &arguments = {})
{
    QDBusMessage call = DBusCall::make(name, path, name, method, arguments);
    call.setAutoStartService(false);
    return call;
}

} // namespace

ShellExtension::ShellExtension(const QDBusConnection &sessionBus)
    : m_bus(sessionBus)
    , m_watcher(name, sessionBus, QDBusServiceWatcher::WatchForOwnerChange)
{
    qDBusRegisterMetaType<QList<uint32_t>>();
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &owner) {
                setAvailable(!owner.isEmpty());
            });
    m_bus.connect(name, path, name, u"Pressed"_s, this, SIGNAL(pressed()));
    m_bus.connect(name, path, name, u"Released"_s, this, SIGNAL(released()));
    const QDBusMessage question = DBusCall::make(
        u"org.freedesktop.DBus"_s, u"/"_s, u"org.freedesktop.DBus"_s, u"NameHasOwner"_s, {name});
    DBusCall::whenAnswered(m_bus.asyncCall(question), this, [this](const QDBusMessage &reply) {
        if (reply.arguments().value(0).toBool())
            setAvailable(true);
    });
}

void ShellExtension::setAvailable(bool isAvailable)
{
    if (m_isAvailable == isAvailable)
        return;
    m_isAvailable = isAvailable;
    Q_EMIT availabilityChanged();
}

void ShellExtension::bind(const QString &accelerator,
                          std::function<void(std::optional<Binding>)> handler)
{
    DBusCall::whenAnswered(m_bus.asyncCall(make(u"Bind"_s, {accelerator})), this,
                           [handler = std::move(handler)](const QDBusMessage &reply) {
                               const QVariantList values = reply.arguments();
                               if (reply.type() != QDBusMessage::ReplyMessage || values.size() != 2)
                                   handler(std::nullopt);
                               else
                                   handler(Binding{values[0].toBool(), values[1].toBool()});
                           });
}

void ShellExtension::unbind()
{
    if (m_isAvailable)
        m_bus.send(make(u"Unbind"_s));
}

bool ShellExtension::stroke(std::initializer_list<uint32_t> keys)
{
    return ask(u"Stroke"_s, {QVariant::fromValue(QList<uint32_t>(keys))}).value(0).toBool();
}

bool ShellExtension::commit(const QString &text)
{
    return ask(u"Commit"_s, {text}).value(0).toBool();
}

std::optional<ShellExtension::Window> ShellExtension::focusedWindow()
{
    const QVariantList values = ask(u"Focus"_s);
    const uint64_t number = values.value(0).toULongLong();
    if (number == 0)
        return std::nullopt;
    return Window{number, values.value(1).toInt(), values.value(2).toString()};
}

QVariantList ShellExtension::ask(const QString &method, const QVariantList &arguments)
{
    if (!m_isAvailable)
        return {};
    const QDBusMessage reply
        = m_bus.call(make(method, arguments), QDBus::Block, DBusCall::milliseconds(patience));
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments() : QVariantList();
}

} // namespace Velloro
