#include "ZuControl/Control/ScanOutputMap.h"

#include "ZuCore/DataSourceHash.h"

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

} // namespace ZuControl
