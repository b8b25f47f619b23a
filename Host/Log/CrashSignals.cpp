#include "Host/Log/CrashSignals.h"

#include "Host/Log/LogWriter.h"

namespace ZuHost
{

namespace
{

constexpr std::array SIGNALS{SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL};
constexpr uint32 PATIENCE_MSEC = 1000;

// The course of each signal before the first object. The handler reads it.
std::array<struct sigaction, SIGNALS.size()> original;
int objects = 0;

/// Calls only functions that are safe in a signal handler: the crashed thread may hold any lock.
void OnCrash(int signal, siginfo_t* info, void* /*context*/)
{
    for (std::size_t i = 0; i < SIGNALS.size(); ++i) // all: a second crash must not come back here
    {
        sigaction(SIGNALS[i], &original[i], nullptr);
    }
    LogWriter::AwaitWritten(PATIENCE_MSEC);
    if (info->si_code <= 0) // sent, by `abort` for example. A fault happens again when the handler returns
    {
        raise(signal);
    }
}

} // namespace

CrashSignals::CrashSignals()
{
    static_assert(SIGNALS.size() == COUNT);
    struct sigaction action
    {
    };
    action.sa_sigaction = OnCrash;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < COUNT; ++i)
    {
        sigaction(SIGNALS[i], &action, &replaced[i]);
    }
    original = objects++ == 0 ? replaced : original;
}

CrashSignals::~CrashSignals()
{
    --objects;
    for (std::size_t i = 0; i < COUNT; ++i)
    {
        sigaction(SIGNALS[i], &replaced[i], nullptr);
    }
}

} // namespace ZuHost
