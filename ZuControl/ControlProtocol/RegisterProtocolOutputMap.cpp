#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"

#include "ZuControl/ControlProtocol/NumericIdProtocolOutputBaseDefinition.h"

template class Zu::Properties::Array<ZuControl::ControlProtocol::RegisterOutputItem>;
template class Zu::Params::Array<ZuControl::ControlProtocol::RegisterOutputItem>;

namespace ZuControl::ControlProtocol
{

RegisterOutputItem::RegisterOutputItem() : Group(""), outputId(DEFAULT_OUTPUT_ID)
{
    Register("outputId", "Id", outputId);
    Register("outputSize", "Size", outputSize);
    Register("source", "Source", source);
    Register("dataOffset", "Offset", dataOffset);
    Register("dataLength", "Length", dataLength);
}

RegisterOutputItem::~RegisterOutputItem() = default;

bool RegisterOutputItem::IsComplete() const
{
    return outputId.Get() != DEFAULT_OUTPUT_ID && source.Get() != DEFAULT_SOURCE &&
           outputSize.Get() != DEFAULT_OUTPUT_SIZE;
}

bool RegisterOutputItem::IsSameOutput(RegisterOutputItem const& other) const
{
    return outputId.Get() == other.outputId.Get() && outputSize.Get() == other.outputSize.Get() &&
           source.Get() == other.source.Get() && dataOffset.Get() == other.dataOffset.Get() &&
           dataLength.Get() == other.dataLength.Get();
}

void RegisterOutputItem::TakeOver(RegisterOutputItem const& other)
{
    outputId.Set(other.outputId.Get());
    outputSize.Set(other.outputSize.Get());
    source.Set(other.source.Get());
    dataOffset.Set(other.dataOffset.Get());
    dataLength.Set(other.dataLength.Get());
}

RegisterOutputItemArgs::RegisterOutputItemArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

RegisterOutputItemArgs::~RegisterOutputItemArgs() = default;

RegisterOutputsAttributes::RegisterOutputsAttributes() : Group("")
{
    Register("start", "Start", start);
    Register("count", "Count", count);
    Register("itemSize", "ItemSize", itemSize);
}

RegisterOutputsAttributes::~RegisterOutputsAttributes() = default;

RegisterOutputs::RegisterOutputs()
{
    Register("map", "OutputMap", map);
    Register("attributes", "Attributes", attributes);
}

RegisterOutputs::~RegisterOutputs() = default;

RegisterOutputsArgs::RegisterOutputsArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

RegisterOutputsArgs::~RegisterOutputsArgs() = default;

template class ProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs, RegisterOutputItemArgs>;
template class NumericIdProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs,
                                           RegisterOutputItemArgs>;

RegisterProtocolOutputMap::RegisterProtocolOutputMap(uint16 start, uint16 count, uint16 itemSize, uint16 mostItems)
    : NumericIdProtocolOutputBase(mostItems), initialStart(start)
{
    Zu::Locker const guard(lock);
    outputs.attributes.start.Set(start);
    outputs.attributes.count.Set(count);
    outputs.attributes.itemSize.Set(itemSize);
}

RegisterProtocolOutputMap::~RegisterProtocolOutputMap() = default;

void RegisterProtocolOutputMap::Add(Zu::Params::Group const& itemArgs)
{
    Add_Helper(itemArgs, dynamic_cast<RegisterOutputItemArgs const&>(itemArgs).autoShift.Get());
}

void RegisterProtocolOutputMap::AddAll(Zu::Params::Group& newOutputs)
{
    auto& listed = dynamic_cast<RegisterOutputs&>(newOutputs);
    Zu::Locker const guard(lock);
    uint64 const count = core.List().Count();
    uint32 nextAddress = count > 0 ? EndOf(count - 1) : initialStart;
    OutputMapRefusal const refusals(notes);
    AddEntries(ZU_FUNCTION_LABEL, listed, [this, &nextAddress, &refusals](RegisterOutputItem& entry) ZU_REQUIRES(lock) {
        std::string const& source = entry.source.Get();
        if (source.empty())
        {
            return refusals.OfBlankEntry(ZU_FUNCTION_LABEL, source);
        }
        if (core.HasSource(source))
        {
            return refusals.OfKnownRegisterEntry(ZU_FUNCTION_LABEL, source);
        }
        entry.outputId.Set(static_cast<uint16>(nextAddress)); // without a check of the range or the size
        core.Append(entry);
        nextAddress += NumOfRegisterOccupies(entry);
        return Zu::Status::SUCCESS;
    });
}

void RegisterProtocolOutputMap::CompactId()
{
    Zu::Locker const guard(lock);
    uint16 nextAddress = initialStart;
    uint64 const count = core.List().Count();
    for (uint64 i = 0; i < count; ++i)
    {
        core.SetId(i, nextAddress);
        nextAddress = static_cast<uint16>(EndOf(i));
    }
}

void RegisterProtocolOutputMap::UpdateId(Zu::Params::Group& outputsArgs)
{
    auto const& args = dynamic_cast<RegisterOutputsArgs const&>(outputsArgs);
    if (args.map.Count() != 2)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    Zu::Locker const guard(lock);
    CheckAddress(args.map.At(1).outputId.Get());
    UpdateId_Helper(outputsArgs, false);
}

void RegisterProtocolOutputMap::OverlapInsert(uint64 index, RegisterOutputItem const& item)
{
    Zu::Locker const guard(lock);
    ShiftOutputMap(index, item);
    core.Put(index, item);
    uint64 const count = core.List().Count();
    for (uint64 i = index; i + 1 < count; ++i)
    {
        if (i > index && core.List().IdAt(i + 1) > EndOf(i))
        {
            break; // the run has reached a gap
        }
        core.SetId(i + 1, static_cast<uint16>(EndOf(i)));
    }
}

IProtocolOutput::ZuProtocolOutputDataOverlapState
RegisterProtocolOutputMap::GetOverlappingState(Zu::Params::Group const& group) const
{
    auto const& item = dynamic_cast<RegisterOutputItem const&>(group);
    uint32 const address = item.outputId.Get();
    Zu::Locker const guard(lock);
    uint64 const index = BSearchForInsert(item);
    if (index >= core.List().Count())
    {
        return 0; // the length of the last item is not taken into account
    }
    uint32 state = 0;
    if (index > 0)
    {
        // Compares with the raw size, which is not a number of registers, and sets the flag where the two do not touch.
        // Saved configurations were accepted and ordered by this test.
        uint32 const rawEnd = uint32{core.List().IdAt(index - 1)} + core.List().SizeAt(index - 1);
        state |= address >= rawEnd ? BEHIND_PREVIOUS : 0;
    }
    uint32 const next = core.List().IdAt(index);
    state |= next < address + NumOfRegisterOccupies(item) ? RUNS_INTO_NEXT : 0;
    return static_cast<ZuProtocolOutputDataOverlapState>(state);
}

void RegisterProtocolOutputMap::SetStartAddress(uint16 newStart)
{
    Zu::Locker const guard(lock);
    auto const difference = static_cast<uint16>(newStart - outputs.attributes.start.Get());
    if (difference == 0)
    {
        return;
    }
    outputs.attributes.start.Set(newStart);
    uint64 const count = core.List().Count();
    for (uint64 i = 0; i < count; ++i)
    {
        core.SetId(i, static_cast<uint16>(core.List().IdAt(i) + difference));
    }
}

uint16 RegisterProtocolOutputMap::StartAddress() const
{
    Zu::Locker const guard(lock);
    return outputs.attributes.start.Get();
}

void RegisterProtocolOutputMap::Add_Helper(Zu::Params::Group const& group, bool autoShift)
{
    auto const& item = dynamic_cast<RegisterOutputItem const&>(group);
    if (!item.IsComplete())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT); // without the log lines of the base
    }
    Zu::Locker const guard(lock);
    CheckAddress(item.outputId.Get());
    uint64 index = BSearchForInsert(item);
    if (index < core.List().Count() && core.List().IsSame(index, item))
    {
        return;
    }
    std::string const& source = item.source.Get();
    if (core.HasSource(source))
    {
        OutputMapRefusal(notes).OfKnownSource(ZU_FUNCTION_LABEL, source);
    }
    ZuProtocolOutputDataOverlapState const state = GetOverlappingState(group);
    if (state != 0 && !autoShift)
    {
        OutputMapRefusal(notes).OfOverlap(ZU_FUNCTION_LABEL, source);
    }
    index -= (state & BEHIND_PREVIOUS) != 0 ? 1 : 0; // the flag is set only behind a previous item
    if ((state & RUNS_INTO_NEXT) != 0)
    {
        OverlapInsert(index, item);
        return;
    }
    CheckRoom(index, item);
    InsertItem(index, item);
}

void RegisterProtocolOutputMap::ShiftOutputMap(uint64 index, RegisterOutputItem const& item)
{
    CheckRoom(index, item);
    NumericIdProtocolOutputBase::ShiftOutputMap(index);
}

void RegisterProtocolOutputMap::CheckRoom(uint64 index, RegisterOutputItem const& item) const
{
    if (core.List().Count() >= maxCount || !hasGap(index, item))
    {
        ZU_THROW(Zu::Status::FULL);
    }
}

uint16 RegisterProtocolOutputMap::NumOfRegisterOccupies(RegisterOutputItem const& item) const
{
    return RegistersFor(item.outputSize.Get());
}

uint16 RegisterProtocolOutputMap::RegistersFor(uint16 size) const
{
    uint32 const itemSize = outputs.attributes.itemSize.Get();
    if (itemSize == 0)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Register size cannot be zero.");
    }
    return static_cast<uint16>((size + itemSize - 1) / itemSize);
}

bool RegisterProtocolOutputMap::hasGap(uint64 index, RegisterOutputItem const& item) const
{
    uint16 const registers = NumOfRegisterOccupies(item);
    auto const free =
        static_cast<uint16>(outputs.attributes.count.Get() - item.outputId.Get() + outputs.attributes.start.Get());
    // Counts the new item's length for each item that moves, not the moved item's own length.
    uint64 const moving = core.List().Count() > index ? core.List().Count() - index : 0;
    auto const needed = static_cast<uint16>(moving * registers);
    return uint32{registers} + needed <= free;
}

void RegisterProtocolOutputMap::CheckAddress(uint16 address) const
{
    uint32 const start = outputs.attributes.start.Get();
    uint32 const end = start + outputs.attributes.count.Get();
    if (address < start || address >= end)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The new entry's address %1$u is not within the range [%2$u : %3$u]",
                 unsigned{address}, start, end);
    }
}

uint32 RegisterProtocolOutputMap::EndOf(uint64 index) const
{
    return uint32{core.List().IdAt(index)} + RegistersFor(core.List().SizeAt(index));
}

std::unique_ptr<RegisterProtocolOutputMap> RegisterProtocolOutputMap::CopyForPreview(RefusalNotes& newNotes) const
{
    Zu::Locker const guard(lock); // the space and the items of one moment
    auto const& space = outputs.attributes;
    auto copy =
        std::make_unique<RegisterProtocolOutputMap>(initialStart, space.count.Get(), space.itemSize.Get(), maxCount);
    copy->SetStartAddress(space.start.Get()); // before there are items, which would move with it
    copy->BecomeCopyOf(*this, newNotes);
    return copy;
}

RegisterSpace RegisterProtocolOutputMap::Space() const
{
    Zu::Locker const guard(lock);
    auto const& space = outputs.attributes;
    return {space.start.Get(), space.count.Get(), space.itemSize.Get()};
}

} // namespace ZuControl::ControlProtocol
