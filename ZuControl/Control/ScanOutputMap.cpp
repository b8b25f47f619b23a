#include "ZuControl/Control/ScanOutputMap.h"

#include "ZuCore/DataSourceHash.h"

#include <bit>
#include <utility>

namespace ZuControl
{

ScanOutputMap::ScanOutputMap()
{
    BuildTable();
}

ScanOutputMap::ScanOutputMap(Texts wantedTexts) : texts(std::move(wantedTexts))
{
    BuildTable();
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

void ScanOutputMap::BuildTable()
{
    table.assign(std::bit_ceil(2 * texts.size() + 1), FREE_SLOT);
    mask = table.size() - 1;
    for (auto const& entry : texts)
    {
        uint64 slot = SlotOf(entry.first);
        while (table[slot] != FREE_SLOT)
        {
            slot = (slot + 1) & mask;
        }
        table[slot] = entry.first;
        hasFreeSlotId = hasFreeSlotId || entry.first == FREE_SLOT;
    }
}

} // namespace ZuControl
