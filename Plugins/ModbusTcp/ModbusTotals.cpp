#include "Plugins/ModbusTcp/ModbusTotals.h"

#include <array>

namespace ModbusTcp
{

namespace
{

constexpr std::array MEMBERS{
    &ModbusTotals::controlDrops,     &ModbusTotals::acceptedClients,  &ModbusTotals::rejectedClients,
    &ModbusTotals::droppedClients,   &ModbusTotals::requests,         &ModbusTotals::exceptions,
    &ModbusTotals::illegalFunctions, &ModbusTotals::illegalAddresses, &ModbusTotals::illegalValues,
    &ModbusTotals::busyRefusals,     &ModbusTotals::bytesIn,          &ModbusTotals::bytesOut,
    &ModbusTotals::resultSets,       &ModbusTotals::commands,         &ModbusTotals::registersWritten,
};
static_assert(sizeof(ModbusTotals) == MEMBERS.size() * sizeof(uint64)); // no member is missing

} // namespace

ModbusTotals ModbusTotals::Since(ModbusTotals const& earlier) const
{
    ModbusTotals difference;
    for (auto const member : MEMBERS)
    {
        difference.*member = this->*member - earlier.*member;
    }
    return difference;
}

} // namespace ModbusTcp
