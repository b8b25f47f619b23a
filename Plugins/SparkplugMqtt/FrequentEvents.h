#pragma once

#include "Plugins/SparkplugMqtt/StandingProblem.h"
#include "wApi/wTypes.h"

#include <string>

namespace SparkplugMqtt
{

/// Tells by a problem that an event happens often: at least `least` times within WINDOW_USEC. The problem goes after a
/// window with fewer events. One thread at a time calls.
class FrequentEvents final
{
public:
    static constexpr uint64 WINDOW_USEC = 60'000'000;

    /// `usedProblems` outlives the object.
    FrequentEvents(ZuCommon::ProblemsManager& usedProblems, uint64 leastEvents, std::string usedText);
    ~FrequentEvents(); ///< the problem goes
    FrequentEvents(FrequentEvents const&) = delete;
    FrequentEvents& operator=(FrequentEvents const&) = delete;

    /// `total` is the number of events since the construction of this object.
    void Look(uint64 total, uint64 nowUsec);

private:
    uint64 const least;
    std::string const text;
    StandingProblem problem;
    uint64 windowTotal = 0; // at the begin of the window
    uint64 windowEndUsec = 0;
};

} // namespace SparkplugMqtt
