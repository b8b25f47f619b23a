#pragma once

#include "wApi/wTypes.h"

#include <functional>
#include <optional>
#include <string>

namespace ZuHost
{

class ITrail;

/// Notes steps of the machine's clock, and whether it is synchronised. One thread at a time.
class ClockWatch final
{
public:
    static constexpr int64 LEAST_STEP_USEC = 1'000'000;

    enum class Synchronisation
    {
        UNKNOWN, ///< the system does not tell
        NO,
        YES
    };

    struct Reading
    {
        int64 realUsec = 0;      ///< since 1970
        int64 unsteppedUsec = 0; ///< of a clock that cannot be set and goes on while the machine sleeps
        Synchronisation synchronisation = Synchronisation::UNKNOWN;
    };

    using Read = std::function<Reading()>;

    /// `usedTrail` outlives this.
    ClockWatch(ITrail& usedTrail, Read newRead);
    ~ClockWatch();

    ClockWatch(ClockWatch const&) = delete;
    ClockWatch& operator=(ClockWatch const&) = delete;

    /// Reads the clocks. The first look notes whether the clock is synchronised; the following ones note changes.
    void Look();

    /// The clocks of this machine.
    static Reading ReadMachine();

private:
    void NoteStep(Reading const& reading);
    void NoteSynchronisation(Reading const& reading);

    ITrail& trail;
    Read const read;
    std::optional<Reading> last;
};

} // namespace ZuHost
