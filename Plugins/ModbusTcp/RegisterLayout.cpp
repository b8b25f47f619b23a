#include "Plugins/ModbusTcp/RegisterLayout.h"

#include "Plugins/ModbusTcp/AssemblyLock.h"
#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuCore/DataSourceHash.h"

#include <algorithm>

namespace ModbusTcp
{

std::shared_ptr<RegisterLayout const>
RegisterLayout::Take(ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase& assembly)
{
    auto layout = std::make_shared<RegisterLayout>();
    AssemblyLock const guard(assembly);
    layout->changeCount = assembly.ChangeCount(); // before the list: what changes behind it shows as a larger one
    for (std::shared_ptr<Block> const& block : assembly.AddedRegisterBlocks())
    {
        layout->Enter(block);
    }
    std::ranges::stable_sort(layout->results, {}, &ResultPlace::dataSource);
    return layout;
}

std::span<RegisterLayout::ResultPlace const> RegisterLayout::Find(uint64 dataSource) const
{
    auto const first = std::ranges::lower_bound(results, dataSource, {}, &ResultPlace::dataSource);
    auto const end = std::find_if(first, results.end(),
                                  [dataSource](ResultPlace const& place) { return place.dataSource != dataSource; });
    return {first, end};
}

void RegisterLayout::Enter(std::shared_ptr<Block> const& block)
{
    Place const place{block->OutputId(), block->RegisterCount(), block};
    uint32 const end = uint32{place.first} + place.count;
    if (end > RegisterImage::REGISTER_COUNT)
    {
        return; // the assembly's range keeps such a block out; the image must not depend on it
    }
    if (block->HasDataSource())
    {
        results.push_back({place, ZuCore::DataSourceHash(block->DataSource())});
        bool const isFirst = resultsFirst == resultsEnd;
        resultsFirst = isFirst ? place.first : std::min<uint32>(resultsFirst, place.first);
        resultsEnd = isFirst ? end : std::max(resultsEnd, end);
    }
    else if (block->Type() == TYPE_CONTROL_INPUT)
    {
        controlInput = place;
    }
    else if (block->Type() == TYPE_CONTROL_OUTPUT)
    {
        controlOutput = place;
    }
    else if (block->Type() == TYPE_SYSTEM)
    {
        system = place;
    }
    else if (block->Type() == TYPE_SCANNER)
    {
        scanner = place;
        scannerId = block->ScannerId();
    }
}

} // namespace ModbusTcp
