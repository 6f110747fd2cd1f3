#pragma once

#include <QtGlobal>
#include <csignal>
#include <sys/resource.h>

namespace Velloro {

/// Limits the size of the files that this process writes, as a full disk does.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};

} // namespace Velloro
