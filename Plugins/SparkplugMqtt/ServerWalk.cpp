#include "Plugins/SparkplugMqtt/ServerWalk.h"

#include <algorithm>
#include <utility>

namespace SparkplugMqtt
{

ServerWalk::ServerWalk(std::size_t newServerCount, Draw newDraw)
    : serverCount(std::max<std::size_t>(newServerCount, 1)), draw(std::move(newDraw))
{
}

uint64 ServerWalk::Advance()
{
    server = (server + 1) % serverCount;
    ++failures;
    uint64 longest = STEP_USEC;
    if (failures % serverCount == 0)
    {
        std::size_t const rounds = std::min<std::size_t>(failures / serverCount, 7); // 2^6 s is beyond the longest
        longest = std::min(FIRST_PAUSE_USEC << (rounds - 1), LONGEST_PAUSE_USEC);
    }
    return longest / 2 + draw(longest / 2);
}

void ServerWalk::NoteSuccess()
{
    failures = 0;
}

} // namespace SparkplugMqtt
