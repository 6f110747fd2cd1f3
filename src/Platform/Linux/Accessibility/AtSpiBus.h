#pragma once

#include "Platform/Linux/Accessibility/AtSpiReference.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QObject>
#include <QVariantList>
#include <chrono>
#include <optional>

namespace Velloro {

class AtSpiLauncher;

/// The connection to the desktop's accessibility bus, made again after the bus was restarted, with
/// the focus events that applications send on it. Main thread.
class AtSpiBus : public QObject
{
    Q_OBJECT

public:
    /// Connects to each bus that the launcher finds; the launcher outlives this object.
    explicit AtSpiBus(AtSpiLauncher &launcher, QObject *parent = nullptr);
    ~AtSpiBus() override;

    [[nodiscard]] bool isConnected() const { return m_bus && m_bus->isConnected(); }

    /// Calls a method and waits for the reply: an error message when there is none in time.
    [[nodiscard]] QDBusMessage call(const AtSpiReference &object, const QString &interface,
                                    const QString &method, const QVariantList &arguments,
                                    std::chrono::milliseconds timeout);
    /// Calls a method without waiting.
    [[nodiscard]] QDBusPendingCall send(const AtSpiReference &object, const QString &interface,
                                        const QString &method, const QVariantList &arguments,
                                        std::chrono::milliseconds timeout);

Q_SIGNALS:
    void connected();
    void disconnected();
    void focusGained(const Velloro::AtSpiReference &object);
    void focusLost(const Velloro::AtSpiReference &object);
    void windowActivated(const Velloro::AtSpiReference &window);
    void windowDeactivated(const Velloro::AtSpiReference &window);
    /// An application has left the bus.
    void serviceGone(const QString &service);

private Q_SLOTS:
    void onBusLost();
    void onFocusChanged(const QDBusMessage &message);
    void onWindowActivated(const QDBusMessage &message);
    void onWindowDeactivated(const QDBusMessage &message);
    void onOwnerChanged(const QString &service, const QString &oldOwner, const QString &newOwner);

private:
    void connectTo(const QString &address);
    void disconnect();

    AtSpiLauncher &m_launcher;
    /// The accessibility bus while connected; its name among this process's connections.
    std::optional<QDBusConnection> m_bus;
    QString m_busName;
};

} // namespace Velloro
