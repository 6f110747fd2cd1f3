#include "Platform/Linux/Wayland/Gnome/ShellExtension.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/DBusCall.h"

#include <QDBusMetaType>
#include <chrono>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 300ms;
constexpr auto lookPatience = 5s;

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
}

void ShellExtension::look(std::function<void(bool)> done)
{
    const QString bus = u"org.freedesktop.DBus"_s;
    const QDBusMessage question
        = DBusCall::make(bus, u"/org/freedesktop/DBus"_s, bus, u"NameHasOwner"_s, {name});
    DBusCall::whenAnswered(m_bus.asyncCall(question, DBusCall::milliseconds(lookPatience)), this,
                           [this, done = std::move(done)](const QDBusMessage &reply) {
                               if (reply.type() == QDBusMessage::ReplyMessage)
                                   setAvailable(reply.arguments().value(0).toBool());
                               done(m_isAvailable);
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
                          std::function<void(std::optional<bool>)> handler)
{
    DBusCall::whenAnswered(m_bus.asyncCall(make(u"Bind"_s, {accelerator})), this,
                           [handler = std::move(handler)](const QDBusMessage &reply) {
                               if (reply.type() == QDBusMessage::ReplyMessage)
                                   handler(reply.arguments().value(0).toBool());
                               else
                                   handler(std::nullopt);
                           });
}

void ShellExtension::unbind()
{
    if (m_isAvailable)
        m_bus.send(make(u"Unbind"_s));
}

bool ShellExtension::stroke(const QList<uint32_t> &keys)
{
    return ask(u"Stroke"_s, {QVariant::fromValue(keys)}).value(0).toBool();
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
