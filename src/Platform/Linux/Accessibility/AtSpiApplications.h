#pragma once

#include "Platform/Linux/Accessibility/AtSpiReference.h"
#include "Platform/Linux/Accessibility/AtSpiTimeAllowance.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QVariantList>
#include <chrono>
#include <sys/types.h>

namespace Velloro {

class AtSpiBus;

/// The applications on the accessibility bus: asks them within the time allowance, and remembers
/// what is known about each. One that once let the time run out is not asked again until it
/// answers. Main thread.
class AtSpiApplications : public QObject
{
    Q_OBJECT

public:
    /// `bus` outlives this object.
    explicit AtSpiApplications(AtSpiBus &bus, QObject *parent = nullptr);

    /// Calls a method and waits for the reply: an error message when there is none in time.
    [[nodiscard]] QDBusMessage call(const AtSpiReference &object, const QString &interface,
                                    const QString &method, const QVariantList &arguments = {});
    /// Reads a property as `call` does; an invalid value when it can't be read.
    [[nodiscard]] QVariant property(const AtSpiReference &object, const QString &interface,
                                    const QString &name);

    /// The object that holds this one; null at the top, and where that can't be read.
    [[nodiscard]] AtSpiReference parentOf(const AtSpiReference &object);

    [[nodiscard]] const AtSpiTimeAllowance &allowance() const { return m_allowance; }
    /// Takes the time that waiting for an application took out of the allowance, and remembers the
    /// application when that used it up.
    void spend(const QString &service, std::chrono::milliseconds elapsed);
    /// Whether the application let the time run out and has not answered since.
    [[nodiscard]] bool isUnresponsive(const QString &service) const;

    /// The process behind a bus name, as the bus knows it; -1 when it is not known.
    [[nodiscard]] pid_t processOf(const QString &service);
    /// The toolkit with which the application is made, as it names it itself.
    [[nodiscard]] QString toolkitOf(const QString &service);

private:
    void learn(const QString &service);
    void probe(const QString &service);
    void forget(const QString &service);
    void forgetAll();

    AtSpiBus &m_bus;
    AtSpiTimeAllowance m_allowance;
    QHash<QString, QDBusPendingCall> m_processes;
    QHash<QString, QString> m_toolkits;
    QSet<QString> m_unresponsive;
};

} // namespace Velloro
