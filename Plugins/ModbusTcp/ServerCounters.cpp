#include "Plugins/ModbusTcp/ServerCounters.h"

namespace ModbusTcp
{

void ServerCounters::CountException(ModbusException refusal)
{
    if (refusal != ModbusException::NONE)
    {
        Count(exceptions);
        Count(exceptionsByCode.at(static_cast<std::size_t>(refusal)));
    }
}

void ServerCounters::NoteHandling(uint64 usec)
{
    lastHandlingUsec.store(usec, std::memory_order_relaxed);
    if (usec > largestHandlingUsec.load(std::memory_order_relaxed))
    {
        largestHandlingUsec.store(usec, std::memory_order_relaxed); // a concurrent reset may be lost
    }
}

} // namespace ModbusTcp
