#include "ZuControl/Control/ScanOutputPlan.h"

#include "ZuCore/DataSourceHash.h"

#include <bit>
#include <utility>

namespace ZuControl
{

ScanOutputMap::ScanOutputMap() = default;

ScanOutputMap::ScanOutputMap(Texts wantedTexts) : texts(std::move(wantedTexts))
{
}

ScanOutputMap::~ScanOutputMap() = default;

uint64 ScanOutputMap::NumericId(std::string const& dataSourceId)
{
    return ZuCore::DataSourceHash(dataSourceId);
}

std::string const* ScanOutputMap::Text(uint64 numericId) const
{
    auto const position = texts.find(numericId);
    return position != texts.end() ? &position->second : nullptr;
}

ScanOutputPlan::ScanOutputPlan(std::span<ScanOutputMap const* const> wanted)
{
    uint64 most = 0; // upper bound of the number of ids: no two maps share one
    for (ScanOutputMap const* const map : wanted)
    {
        most += map->Count();
    }
    table.resize(std::bit_ceil(2 * most + 1));
    mask = table.size() - 1;
    Receivers receiver = 1;
    for (ScanOutputMap const* const map : wanted)
    {
        for (auto const& entry : map->AllTexts())
        {
            Enter(entry.first, receiver);
        }
        receiver <<= 1;
    }
}

ScanOutputPlan::~ScanOutputPlan() = default;

void ScanOutputPlan::Enter(uint64 numericId, Receivers receiver)
{
    uint64 slot = SlotOf(numericId);
    while (table[slot].receivers != 0 && table[slot].numericId != numericId)
    {
        slot = (slot + 1) & mask;
    }
    table[slot].numericId = numericId;
    table[slot].receivers |= receiver;
}

} // namespace ZuControl
