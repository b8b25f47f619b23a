#include "Host/OrderlyStop.h"

#include "Host/Log/LogWriter.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <semaphore.h>
#include <unistd.h>
#include <utility>

namespace ZuHost::OrderlyStop
{

namespace
{

constexpr int EXIT_BROKEN = 1;
constexpr uint32 LOG_PATIENCE_MSEC = 200;

// Signal handlers use these variables, so they are lock-free and constructed before `main`.
std::atomic<char const*> step{"starting"};
std::atomic<uint32> limitSeconds{DEFAULT_LIMIT_SECONDS};
std::atomic<bool> isRequested{false};
std::atomic<bool> hasHungUp{false};
sem_t requested;                // posted for a stop and for each SIGHUP
std::function<void()> onHangUp; // of the main thread

void OnStop(int /*signal*/)
{
    int const savedError = errno;
    if (!isRequested.exchange(true))
    {
        alarm(limitSeconds.load());
        sem_post(&requested);
    }
    errno = savedError;
}

void OnHangUp(int /*signal*/)
{
    int const savedError = errno;
    hasHungUp.store(true);
    sem_post(&requested);
    errno = savedError;
}

/// Writes `text` unless a full pipe would block the thread.
void WriteWithoutBlocking(char const* text)
{
    pollfd standardError{STDERR_FILENO, POLLOUT, 0};
    if (poll(&standardError, 1, 0) == 1)
    {
        [[maybe_unused]] auto const written = write(STDERR_FILENO, text, std::strlen(text));
    }
}

/// Only functions that are safe in a signal handler: other threads may hold any lock.
void OnLimit(int /*signal*/)
{
    char line[256] = "zucontrol-host: the stop has not ended within its limit: it hangs while ";
    std::strncat(line, step.load(), sizeof line - std::strlen(line) - 2);
    LogWriter::AwaitWritten(LOG_PATIENCE_MSEC); // the last lines of the log may say why
    WriteWithoutBlocking(std::strcat(line, "\n"));
    _exit(EXIT_BROKEN);
}

void Handle(int signal, void (*handler)(int))
{
    struct sigaction action
    {
    };
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

} // namespace

void Install()
{
    sem_init(&requested, 0, 0);
    Handle(SIGALRM, OnLimit);
    Handle(SIGTERM, OnStop);
    Handle(SIGINT, OnStop);
    Handle(SIGHUP, OnHangUp);
}

void SetLimit(uint32 seconds)
{
    limitSeconds.store(seconds);
}

void SetStep(char const* literal)
{
    step.store(literal);
}

void SetHangUpHandler(std::function<void()> handler)
{
    onHangUp = std::move(handler);
}

bool IsRequested()
{
    return isRequested.load();
}

void Wait()
{
    while (!isRequested.load())
    {
        while (sem_wait(&requested) != 0) // interrupted by a handler
        {
        }
        if (hasHungUp.exchange(false) && onHangUp)
        {
            onHangUp();
        }
    }
}

} // namespace ZuHost::OrderlyStop
