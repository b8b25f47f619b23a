#pragma once

#include "wApi/wTypes.h"

#include <ctime>

namespace ZuBench
{

/// The time since construction, by one of the system's clocks. A CPU clock stops while other threads have the
/// processor, so use one on a machine that is not idle.
class Stopwatch final
{
public:
    explicit Stopwatch(clockid_t usedClock) : clock(usedClock), began(Now(usedClock))
    {
    }

    static Stopwatch OfThread()
    {
        return Stopwatch(CLOCK_THREAD_CPUTIME_ID);
    }

    static Stopwatch OfProcess()
    {
        return Stopwatch(CLOCK_PROCESS_CPUTIME_ID);
    }

    uint64 Nanoseconds() const
    {
        return Now(clock) - began;
    }

    static uint64 Now(clockid_t clock = CLOCK_MONOTONIC)
    {
        timespec moment{};
        clock_gettime(clock, &moment);
        return static_cast<uint64>(moment.tv_sec) * 1'000'000'000 + static_cast<uint64>(moment.tv_nsec);
    }

private:
    clockid_t const clock;
    uint64 const began;
};

} // namespace ZuBench
