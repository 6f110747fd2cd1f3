#pragma once

#include <QLocalServer>
#include <QObject>

namespace Velloro {

/// Sees to it that one Velloro runs per user session. A lock that the kernel gives back with the
/// process decides, so a crash leaves nothing behind. Main thread only.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(QObject *parent = nullptr);
    ~SingleInstance() override;

    /// True when this process is the one. Otherwise the running one is asked to come forward.
    [[nodiscard]] bool acquire();

Q_SIGNALS:
    /// The program was started again.
    void activationRequested();

private:
    int m_lockFile = -1;
    QLocalServer m_server;
};

} // namespace Velloro
