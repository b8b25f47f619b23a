#include "wApi/wTime.h"

#include <ctime>

uint64 wTime_NowUsec() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64>(now.tv_sec) * 1'000'000 + static_cast<uint64>(now.tv_nsec) / 1000;
}

uint64 wTime_AfterUsec(uint64 timeoutUsec) noexcept
{
    uint64 const now = wTime_NowUsec();
    return timeoutUsec < wTIMEOUT_INFINITE - now ? now + timeoutUsec : wTIMEOUT_INFINITE;
}
