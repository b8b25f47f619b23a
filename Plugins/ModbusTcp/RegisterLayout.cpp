#include "Plugins/ModbusTcp/RegisterLayout.h"

#include "Plugins/ModbusTcp/Blocks/MapFingerprintBlock.h"
#include "Plugins/ModbusTcp/Blocks/OrderTestBlock.h"
#include "Plugins/ModbusTcp/Blocks/SourceListBlock.h"
#include "Plugins/ModbusTcp/Blocks/StateBitsBlock.h"
#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "ZuControl/ControlProtocol/AssemblyLock.h"
#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuCore/DataSourceHash.h"

#include <algorithm>
#include <bit>

namespace ModbusTcp
{

namespace
{

RegisterLayout::Place PlaceOf(std::shared_ptr<RegisterLayout::Block> const& block)
{
    auto const* const ordered = dynamic_cast<ZuControl::ControlProtocol::IOrderedBlock const*>(block.get());
    return {.first = block->OutputId(),
            .count = block->RegisterCount(),
            .ownOrder = ordered != nullptr ? ordered->OwnOrder() : std::nullopt,
            .block = block,
            .encoder = dynamic_cast<IModbusBlock*>(block.get())};
}

bool IsFingerprint(RegisterLayout::Place const& place)
{
    return place.block->Type() == MapFingerprintBlock::TYPE;
}

bool IsConstant(RegisterLayout::Place const& place)
{
    return IsFingerprint(place) || place.block->Type() == OrderTestBlock::TYPE;
}

} // namespace

std::shared_ptr<RegisterLayout const>
RegisterLayout::Take(ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase& assembly)
{
    auto layout = std::make_shared<RegisterLayout>();
    ZuControl::ControlProtocol::AssemblyLock const guard(assembly);
    layout->changeCount = assembly.ChangeCount(); // before the list, so that a later change has a larger count
    for (std::shared_ptr<Block> const& block : assembly.AddedRegisterBlocks())
    {
        layout->Enter(block);
    }
    std::ranges::stable_sort(layout->results, {}, &ResultPlace::dataSource);
    layout->BuildIndex();
    if (std::ranges::any_of(layout->constants, &IsFingerprint))
    {
        // Under the lock, so that it is the fingerprint of this list. From here on the list must not be read.
        layout->facts.fingerprint =
            ZuControl::ControlProtocol::Fingerprint::Of({ZuControl::ControlProtocol::ReadLayout(assembly)});
    }
    return layout;
}

std::span<RegisterLayout::ResultPlace const> RegisterLayout::Find(uint64 dataSource) const
{
    uint64 slot = SlotOf(dataSource);
    while (slots[slot].count != 0 && slots[slot].dataSource != dataSource)
    {
        slot = (slot + 1) & (slots.size() - 1);
    }
    return {results.data() + slots[slot].first, slots[slot].count};
}

void RegisterLayout::Enter(std::shared_ptr<Block> const& block)
{
    Place const place = PlaceOf(block);
    uint32 const end = uint32{place.first} + place.count;
    if (end > RegisterImage::REGISTER_COUNT)
    {
        return; // the assembly refuses such a block, but the image must not rely on it
    }
    if (block->HasDataSource())
    {
        EnterResult(place);
        AddToImage(place);
    }
    else if (IsConstant(place))
    {
        constants.push_back(place);
        AddToImage(place);
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
    else if (block->Type() == StateBitsBlock::TYPE)
    {
        stateBits = place;
    }
}

void RegisterLayout::EnterResult(Place const& place)
{
    std::string const& sources = place.block->DataSource();
    auto* const list = dynamic_cast<SourceListBlock*>(place.block.get());
    if (list == nullptr)
    {
        results.push_back({place, ZuCore::DataSourceHash(sources)});
        return;
    }
    lists.push_back({place, list, sources});
    auto const names = SourceListBlock::Split(sources);
    for (std::size_t i = 0; i < std::min(names.size(), SourceListBlock::MOST_SOURCES); ++i)
    {
        if (!names[i].empty())
        {
            results.push_back({place, ZuCore::DataSourceHash(names[i]), list, i});
        }
    }
}

void RegisterLayout::AddToImage(Place const& place)
{
    uint32 const end = uint32{place.first} + place.count;
    bool const isFirst = imageFirst == imageEnd;
    imageFirst = isFirst ? place.first : std::min<uint32>(imageFirst, place.first);
    imageEnd = isFirst ? end : std::max(imageEnd, end);
}

void RegisterLayout::BuildIndex()
{
    slots.assign(std::bit_ceil(2 * results.size() + 1), {});
    for (uint32 i = 0; i < results.size(); ++i)
    {
        uint64 slot = SlotOf(results[i].dataSource);
        while (slots[slot].count != 0 && slots[slot].dataSource != results[i].dataSource)
        {
            slot = (slot + 1) & (slots.size() - 1);
        }
        Slot& taken = slots[slot];
        taken = {results[i].dataSource, taken.count == 0 ? i : taken.first, taken.count + 1};
    }
}

} // namespace ModbusTcp
