#include "Plugins/SparkplugMqtt/ClockJumps.h"

#include "ZuApi/Logging.h"

#include <array>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace SparkplugMqtt
{

namespace
{

int64 UsecOf(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<int64>(time.tv_sec) * 1'000'000 + time.tv_nsec / 1'000;
}

/// Such as "2026-05-04T03:02:01Z".
std::string TimeText(int64 utcMsec)
{
    std::time_t const seconds = utcMsec / 1000;
    std::tm parts{};
    std::array<char, 32> text{};
    gmtime_r(&seconds, &parts);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

} // namespace

ClockJumps::ClockJumps(ZuCommon::ProblemsManager& usedProblems, Read newRead)
    : read(std::move(newRead)), problem(usedProblems)
{
}

ClockJumps::~ClockJumps() = default;

bool ClockJumps::Look()
{
    Reading const present = read();
    Reading const before = std::exchange(last, present).value_or(present);
    int64 const expectedMsec = before.utcMsec + (present.unsteppedUsec - before.unsteppedUsec) / 1000;
    if (std::abs(present.utcMsec - expectedMsec) >= LEAST_JUMP_MSEC)
    {
        jumpedAtUsec = present.unsteppedUsec;
        Tell(expectedMsec, present.utcMsec);
        return true;
    }
    if (count > 0 && present.unsteppedUsec - jumpedAtUsec >= TOLD_USEC)
    {
        count = 0;
        problem.Show("");
    }
    return false;
}

ClockJumps::Reading ClockJumps::ReadMachine()
{
    return {UsecOf(CLOCK_REALTIME) / 1000, UsecOf(CLOCK_BOOTTIME)};
}

void ClockJumps::Tell(int64 expectedMsec, int64 presentMsec)
{
    std::string const from = TimeText(expectedMsec);
    std::string const to = TimeText(presentMsec);
    ZU_LOG_WARNING("The clock has jumped from %s to %s: the timestamps of Sparkplug MQTT before or after it are wrong",
                   from.c_str(), to.c_str());
    ++count;
    std::string text = "The clock has jumped from " + from + " to " + to;
    if (count == 1)
    {
        firstTime = from;
    }
    else
    {
        text += ", jump " + std::to_string(count) + " since " + firstTime;
    }
    problem.Show(text +
                 ". The timestamps of Sparkplug MQTT on one side of it are wrong: find out which of the two times "
                 "is right, and let a time server keep the clock.");
}

} // namespace SparkplugMqtt
