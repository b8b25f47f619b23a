#include "Plugins/AsciiTcp/AsciiCounters.h"

namespace AsciiTcp
{

void AsciiCounters::Reset()
{
    ClientCounters::Reset();
    for (auto* counter : {&errors, &resultSets, &controlDrops, &lastHandlingUsec, &largestHandlingUsec})
    {
        counter->store(0, std::memory_order_relaxed);
    }
}

} // namespace AsciiTcp
