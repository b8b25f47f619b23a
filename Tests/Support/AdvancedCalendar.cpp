#include "Support/AdvancedCalendar.h"

#include <atomic>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

std::atomic<int64> advanceSec{0};

} // namespace

// Replaces the function of the C library in the whole program, shared objects included.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* moment) noexcept
{
    auto const result = static_cast<int>(syscall(SYS_clock_gettime, clock, moment));
    if (result == 0 && clock == CLOCK_REALTIME)
    {
        moment->tv_sec += advanceSec.load(std::memory_order_relaxed);
    }
    return result;
}

namespace ZuTest
{

AdvancedCalendar::AdvancedCalendar(int64 seconds)
{
    advanceSec = seconds;
}

AdvancedCalendar::~AdvancedCalendar()
{
    advanceSec = 0;
}

} // namespace ZuTest
