#include "stopSignal.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace vshost {

namespace {

// A signal handler can reach only globals.
std::atomic<bool> stopRequested{false};
std::atomic<int> wakeDescriptor{-1};

void requestStop()
{
    stopRequested = true;
    const char wake = 0;
    // The pipe keeps what it holds, so that a full one needs no further byte.
    if (write(wakeDescriptor, &wake, 1) < 0)
        return;
}

extern "C" void onStopSignal(int) { requestStop(); }

void installHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

} // namespace

StopSignal::StopSignal()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::runtime_error("no pipe can be made");
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    wakeDescriptor = m_writeEnd;
    stopRequested = false;
    installHandler(onStopSignal);
    // Output into a closed pipe is noticed where it is written.
    std::signal(SIGPIPE, SIG_IGN);
}

StopSignal::~StopSignal()
{
    installHandler(SIG_DFL);
    wakeDescriptor = -1;
    close(m_readEnd);
    close(m_writeEnd);
}

void StopSignal::request() { requestStop(); }

bool StopSignal::requested() const { return stopRequested || (m_deadline && Clock::now() >= *m_deadline); }

void StopSignal::wait(Milliseconds time) const
{
    if (m_deadline)
        time = std::min(time, timeUntil(*m_deadline));
    pollfd wake = {m_readEnd, POLLIN, 0};
    poll(&wake, 1, static_cast<int>(std::max(time, Milliseconds(0)).count()));
}

} // namespace vshost
