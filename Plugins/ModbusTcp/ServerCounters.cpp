#include "Plugins/ModbusTcp/ServerCounters.h"

namespace ModbusTcp
{

void ServerCounters::Reset()
{
    ClientCounters::Reset();
    exceptions.store(0, std::memory_order_relaxed);
}

} // namespace ModbusTcp
