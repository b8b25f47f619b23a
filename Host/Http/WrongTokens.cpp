#include "Host/Http/WrongTokens.h"

#include "ZuApi/Logging.h"

#include <algorithm>

namespace ZuHost
{

using boost::asio::ip::address;

WrongTokens::WrongTokens() = default;
WrongTokens::~WrongTokens() = default;

uint64 WrongTokens::Note(address const& source, uint64 nowUsec)
{
    uint64 delayUsec = 0;
    uint64 total = 0;
    bool isToLog = false;
    {
        Zu::MutexLock const guard(mutex);
        delayUsec = DelayOf(source, nowUsec);
        total = ++count;
        isToLog = nowUsec >= nextLineUsec;
        nextLineUsec = isToLog ? nowUsec + LOG_PERIOD_USEC : nextLineUsec;
    }
    if (isToLog)
    {
        ZU_LOG_WARNING("The REST service has refused %1$llu wrong tokens, the last one from %2$s",
                       static_cast<unsigned long long>(total), source.to_string().c_str());
    }
    return delayUsec;
}

uint64 WrongTokens::Count() const
{
    Zu::MutexLock const guard(mutex);
    return count;
}

/// Spaces the refusals to one source by `PERIOD_USEC`. A source that has shown no wrong token for a while has
/// `PROMPT_REFUSALS` again.
uint64 WrongTokens::DelayOf(address const& source, uint64 nowUsec)
{
    constexpr uint64 MAX_LEAD_USEC = (PROMPT_REFUSALS - 1) * PERIOD_USEC;
    uint64 const earliestUsec = nowUsec - std::min(nowUsec, MAX_LEAD_USEC);
    bool const isKnown = dueUsec.contains(source);
    if (!isKnown && dueUsec.size() >= MAX_SOURCES)
    {
        std::erase_if(dueUsec, [earliestUsec](auto const& one) { return one.second <= earliestUsec; });
    }
    bool const hasRoom = isKnown || dueUsec.size() < MAX_SOURCES;
    uint64& due = dueUsec[hasRoom ? source : address()];
    uint64 const turnUsec = std::clamp(due, earliestUsec, nowUsec + MAX_DELAY_USEC);
    due = turnUsec + PERIOD_USEC;
    return turnUsec - std::min(turnUsec, nowUsec);
}

} // namespace ZuHost
