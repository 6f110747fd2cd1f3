#pragma once

#include "Base/FileDescriptor.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

namespace Velloro {

/// Writes something into another program's pipe, without waiting for that. Destroys itself when it
/// is done, or the reader has gone or has taken nothing for half a minute.
class PipeWriter final : public QObject
{
    Q_OBJECT

public:
    PipeWriter(FileDescriptor pipe, QByteArray data, QObject *parent);

    void start();

Q_SIGNALS:
    /// Everything has been written, and the pipe is closed.
    void finished();

private:
    void write();
    void close();

    FileDescriptor m_pipe;
    QByteArray m_data;
    qsizetype m_written = 0;
    QSocketNotifier m_notifier;
    QTimer m_patience;
};

} // namespace Velloro
