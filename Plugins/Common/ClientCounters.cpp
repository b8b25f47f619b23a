#include "Plugins/Common/ClientCounters.h"

namespace PluginCommon
{

void ClientCounters::Reset()
{
    for (auto* counter : {&acceptedClients, &rejectedClients, &droppedClients, &requests, &bytesIn, &bytesOut})
    {
        counter->store(0, std::memory_order_relaxed);
    }
}

} // namespace PluginCommon
