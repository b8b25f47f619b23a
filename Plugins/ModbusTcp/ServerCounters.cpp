#include "Plugins/ModbusTcp/ServerCounters.h"

namespace ModbusTcp
{

void ServerCounters::Reset()
{
    for (auto* counter :
         {&acceptedClients, &rejectedClients, &droppedClients, &requests, &exceptions, &bytesIn, &bytesOut})
    {
        counter->store(0, std::memory_order_relaxed);
    }
}

} // namespace ModbusTcp
