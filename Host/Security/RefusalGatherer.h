#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace ZuHost
{

class ITrail;
struct TrailEntry;

/// Notes refusals in the trail, and bounds their number: of the refusals of one caller from one address it notes the
/// first at once, and the number of the others, one entry a minute.
///
/// All operations are thread-safe and do not block.
class RefusalGatherer final
{
public:
    static constexpr uint64 PERIOD_USEC = 60'000'000;
    static constexpr std::size_t MAX_BURSTS = 256; ///< remembered bursts; further refusals are gathered together

    /// The present time in microseconds, as `wTime_NowUsec`.
    using Clock = std::function<uint64()>;

    /// The trail outlives this.
    RefusalGatherer(ITrail& usedTrail, Clock newClock);
    ~RefusalGatherer(); ///< notes the numbers of the present bursts

    RefusalGatherer(RefusalGatherer const&) = delete;
    RefusalGatherer& operator=(RefusalGatherer const&) = delete;

    void Note(TrailEntry entry);

private:
    using Source = std::pair<std::string, std::string>; // the address and the caller; both empty: all further ones

    struct Burst
    {
        uint64 sinceUsec = 0;
        uint64 count = 0; ///< of the refusals that are not noted yet
    };

    void NoteEnded(uint64 nowUsec, uint64 periodUsec) ZU_REQUIRES(lock);

    ITrail& trail;
    Clock const clock;
    Zu::Mutex lock; // the trail's lock is taken under it
    std::map<Source, Burst> bursts ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
