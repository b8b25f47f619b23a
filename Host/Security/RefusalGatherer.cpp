#include "Host/Security/RefusalGatherer.h"

#include "Host/Audit/ITrail.h"
#include "ZuApi/Guard.h"

#include <utility>

namespace ZuHost
{

RefusalGatherer::RefusalGatherer(ITrail& usedTrail, Clock newClock) : trail(usedTrail), clock(std::move(newClock))
{
}

RefusalGatherer::~RefusalGatherer()
{
    ZU_GUARD_DESTRUCTOR([this] {
        Zu::MutexLock const guard(lock);
        NoteEnded(clock(), 0);
    });
}

void RefusalGatherer::Note(TrailEntry entry)
{
    uint64 const nowUsec = clock();
    Zu::MutexLock const guard(lock);
    NoteEnded(nowUsec, PERIOD_USEC);
    Source source(entry.from, entry.who);
    bool const hasRoom = bursts.contains(source) || bursts.size() < MAX_BURSTS;
    auto const [place, isFirst] = bursts.try_emplace(hasRoom ? std::move(source) : Source(), Burst{nowUsec, 0});
    if (isFirst)
    {
        trail.Note(std::move(entry));
    }
    else
    {
        ++place->second.count;
    }
}

/// Notes and forgets the bursts that have begun at least `periodUsec` ago.
void RefusalGatherer::NoteEnded(uint64 nowUsec, uint64 periodUsec)
{
    std::erase_if(bursts, [&](auto const& one) ZU_REQUIRES(lock) {
        auto const& [source, burst] = one;
        if (nowUsec - burst.sinceUsec < periodUsec)
        {
            return false;
        }
        if (burst.count != 0)
        {
            trail.Note({source.second, source.first.empty() ? "other sources" : source.first,
                        std::to_string(burst.count) + " more refusals", "", "", "refused"});
        }
        return true;
    });
}

} // namespace ZuHost
