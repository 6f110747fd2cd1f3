#pragma once

#include "Base/FileDescriptor.h"
#include "Platform/Linux/Process/HotkeyCommand.h"

#include <QLocalServer>
#include <QObject>

class QLocalSocket;

namespace Velloro {

/// Sees to it that one Velloro runs per user session. A lock that the kernel gives back with the
/// process decides, so a crash leaves nothing behind. Main thread only.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(QObject *parent = nullptr);
    ~SingleInstance() override;

    /// True when this process is the one. Otherwise the running one has been asked to come forward;
    /// when it does not say that it will, this waits up to two seconds for its end, to take its
    /// place.
    [[nodiscard]] bool acquire();
    /// For an instance that is ending: answers no further start of the program.
    void stopAnswering();

    /// Where the running one listens, for `HotkeyCommand::send`.
    [[nodiscard]] static QByteArray socketPath();

Q_SIGNALS:
    /// The program was started again.
    void activationRequested();
    /// The program was started to press or release the hotkey of this one.
    void hotkeyCommanded(const Velloro::HotkeyCommand &command);

private:
    void answer(QLocalSocket &caller);

    FileDescriptor m_lockFile;
    QLocalServer m_server;
};

} // namespace Velloro
