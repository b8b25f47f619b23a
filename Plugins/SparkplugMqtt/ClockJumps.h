#pragma once

#include "Plugins/SparkplugMqtt/StandingProblem.h"
#include "wApi/wTypes.h"

#include <functional>
#include <optional>
#include <string>

namespace SparkplugMqtt
{

/// Tells by a problem that the machine's clock has jumped: the timestamps of samples before it or after it are wrong.
///
/// A step between two looks of LEAST_JUMP_MSEC or more is a jump; a clock that a time server slows down or speeds up
/// makes smaller steps. The problem stays for TOLD_USEC after the last jump. One thread at a time calls.
class ClockJumps final
{
public:
    static constexpr int64 LEAST_JUMP_MSEC = 1000;
    static constexpr int64 TOLD_USEC = 3'600'000'000;

    struct Reading
    {
        int64 utcMsec = 0;
        int64 unsteppedUsec = 0; ///< of a clock that cannot be set and goes on while the machine sleeps
    };

    using Read = std::function<Reading()>;

    /// `usedProblems` outlives the object.
    explicit ClockJumps(ZuCommon::ProblemsManager& usedProblems, Read newRead = &ReadMachine);
    ~ClockJumps(); ///< the problem goes
    ClockJumps(ClockJumps const&) = delete;
    ClockJumps& operator=(ClockJumps const&) = delete;

    /// Reads the clocks, shows the problem or ends it. Returns whether the clock has jumped since the last look.
    bool Look();

    /// The clocks of this machine.
    static Reading ReadMachine();

private:
    void Tell(int64 expectedMsec, int64 presentMsec);

    Read const read;
    StandingProblem problem;
    std::optional<Reading> last;
    uint64 count = 0; // jumps that the problem tells
    std::string firstTime;
    int64 jumpedAtUsec = 0;
};

} // namespace SparkplugMqtt
