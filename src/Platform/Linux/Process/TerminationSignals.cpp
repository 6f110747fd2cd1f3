#include "Platform/Linux/Process/TerminationSignals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Velloro {

namespace {

constexpr std::array terminationSignals = {SIGTERM, SIGINT, SIGHUP};

// The handler reaches nothing else; written before it is installed.
int eventDescriptor = -1;

extern "C" void wakeMainThread(int)
{
    // The code that is interrupted may be about to read it.
    const int interruptedErrno = errno;
    const eventfd_t one = 1;
    [[maybe_unused]] const auto written = ::write(eventDescriptor, &one, sizeof one);
    errno = interruptedErrno;
}

/// Whether whoever started the program wants it to outlive its terminal, as nohup does.
bool isIgnored(int number)
{
    struct sigaction action = {};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void setHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int number : terminationSignals) {
        if (number != SIGHUP || !isIgnored(number))
            ::sigaction(number, &action, nullptr);
    }
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
    , m_signal(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_notifier(m_signal.get(), QSocketNotifier::Read)
{
    eventDescriptor = m_signal.get();
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] {
        eventfd_t count = 0;
        ::eventfd_read(m_signal.get(), &count);
        Q_EMIT terminationRequested();
    });
    setHandler(wakeMainThread);
}

TerminationSignals::~TerminationSignals()
{
    setHandler(SIG_DFL);
}

} // namespace Velloro
