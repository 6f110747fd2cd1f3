#include "Platform/Linux/Wayland/Clipboard/PipeWriter.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 30s;

} // namespace

PipeWriter::PipeWriter(FileDescriptor pipe, QByteArray data, QObject *parent)
    : QObject(parent)
    , m_pipe(std::move(pipe))
    , m_data(std::move(data))
    , m_notifier(m_pipe.get(), QSocketNotifier::Write)
{
    fcntl(m_pipe.get(), F_SETFL, O_NONBLOCK);
    m_notifier.setEnabled(false);
    connect(&m_notifier, &QSocketNotifier::activated, this, &PipeWriter::write);
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, &PipeWriter::close);
}

void PipeWriter::start()
{
    m_notifier.setEnabled(true);
    write();
}

void PipeWriter::write()
{
    while (m_written < m_data.size()) {
        const ssize_t size = ::write(m_pipe.get(), m_data.constData() + m_written,
                                     static_cast<size_t>(m_data.size() - m_written));
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0 && errno == EAGAIN)
            return;
        if (size < 0) {
            close();
            return;
        }
        m_written += size;
        m_patience.start();
    }
    close();
    Q_EMIT finished();
}

void PipeWriter::close()
{
    m_notifier.setEnabled(false);
    m_patience.stop();
    m_pipe = FileDescriptor();
    deleteLater();
}

} // namespace Velloro
