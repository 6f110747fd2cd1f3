#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>

namespace Velloro {

/// A program on the session bus, which answers calls as the test has it answer.
class ScriptedService : public QDBusVirtualObject
{
public:
    explicit ScriptedService(const QString &name)
        : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name))
        , m_name(name)
    {
        bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
    }
    ~ScriptedService() override { QDBusConnection::disconnectFromBus(m_name); }

    [[nodiscard]] bool start() { return bus.registerService(m_name); }
    void stop() { bus.unregisterService(m_name); }

    /// The methods that were called.
    QStringList calls;
    QDBusConnection bus;

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        calls << message.member();
        return answer(message);
    }

protected:
    virtual bool answer(const QDBusMessage &message) = 0;

    void emitSignal(const QString &path, const QString &interface, const QString &name,
                    const QVariantList &arguments)
    {
        QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
        signal.setArguments(arguments);
        bus.send(signal);
    }

private:
    QString m_name;
};

} // namespace Velloro
