#include "Host/Audit/ClockWatch.h"

#include "Host/Audit/ITrail.h"
#include "Host/Audit/TrailText.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <ctime>
#include <sys/timex.h>
#include <utility>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;

int64 UsecOf(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<int64>(time.tv_sec) * 1'000'000 + time.tv_nsec / 1'000;
}

char const* TextOf(ClockWatch::Synchronisation synchronisation)
{
    switch (synchronisation)
    {
    case ClockWatch::Synchronisation::YES:
        return "yes";
    case ClockWatch::Synchronisation::NO:
        return "no";
    default:
        return "unknown";
    }
}

std::string Synchronised(ClockWatch::Reading const& reading)
{
    return Json{{"synchronised", TextOf(reading.synchronisation)}}.dump();
}

} // namespace

ClockWatch::ClockWatch(ITrail& usedTrail, Read newRead) : trail(usedTrail), read(std::move(newRead))
{
}

ClockWatch::~ClockWatch() = default;

void ClockWatch::Look()
{
    Reading const reading = read();
    NoteStep(reading);
    NoteSynchronisation(reading);
    last = reading;
}

ClockWatch::Reading ClockWatch::ReadMachine()
{
    Reading reading;
    reading.realUsec = UsecOf(CLOCK_REALTIME);
    reading.unsteppedUsec = UsecOf(CLOCK_BOOTTIME);
    timex state{};
    int const result = ntp_adjtime(&state); // only reads: no mode is set
    if (result >= 0)
    {
        bool const isSynchronised = result != TIME_ERROR && (state.status & STA_UNSYNC) == 0;
        reading.synchronisation = isSynchronised ? Synchronisation::YES : Synchronisation::NO;
    }
    return reading;
}

void ClockWatch::NoteStep(Reading const& reading)
{
    if (!last.has_value())
    {
        return;
    }
    int64 const expectedUsec = last->realUsec + (reading.unsteppedUsec - last->unsteppedUsec);
    int64 const stepUsec = reading.realUsec - expectedUsec;
    if (std::abs(stepUsec) > LEAST_STEP_USEC)
    {
        Json const before{{"time", TrailText::TimeOf(expectedUsec)}};
        Json const after{{"time", TrailText::TimeOf(reading.realUsec)}, {"stepUsec", stepUsec}};
        trail.Note({"host", "", "clock step", before.dump(), after.dump(), "done"});
    }
}

void ClockWatch::NoteSynchronisation(Reading const& reading)
{
    if (!last.has_value() || last->synchronisation != reading.synchronisation)
    {
        std::string const before = last.has_value() ? Synchronised(*last) : std::string();
        trail.Note({"host", "", "clock", before, Synchronised(reading), "done"});
    }
}

} // namespace ZuHost
