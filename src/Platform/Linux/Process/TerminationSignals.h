#pragma once

#include "Base/FileDescriptor.h"

#include <QObject>
#include <QSocketNotifier>

namespace Velloro {

/// Turns SIGTERM, SIGINT and SIGHUP into a signal on the main thread. A SIGHUP that was ignored
/// when the program started stays so. At most one exists.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void terminationRequested();

private:
    FileDescriptor m_signal;
    QSocketNotifier m_notifier;
};

} // namespace Velloro
