#pragma once

// The operations of ProtocolOutputBase, for the files that instantiate it.

#include "ZuApi/Exception.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/ControlProtocol/ProtocolOutputBase.h"

#include <concepts>
#include <utility>

namespace ZuControl::ControlProtocol
{

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::ProtocolOutputBase(uint16 mostItems)
    : maxCount(mostItems), core(std::make_unique<RecordItems<OutputItem>>(outputs.map))
{
    ZU_CHECK(wLock_Construct(&lock, nullptr));
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::~ProtocolOutputBase() = default;

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::BeginLock()
{
    ZU_CHECK(wLock_Enter(lock));
    lockHeld.store(1, std::memory_order_relaxed);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::EndLock()
{
    lockHeld.store(0, std::memory_order_relaxed); // before the exit, which lets the next holder set it
    ZU_CHECK(wLock_Exit(lock));
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
Zu::Params::Group const& ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::OutputMap() const
{
    if (lockHeld.load(std::memory_order_relaxed) != 1)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    return outputs;
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
std::shared_ptr<Zu::Params::Group>
ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::CreateOutputMapItemArgs() const
{
    return std::make_shared<OutputItemArgs>();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
std::shared_ptr<Zu::Params::Group>
ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::CreateOutputsArgs() const
{
    return std::make_shared<OutputsArgs>();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::Add(Zu::Params::Group const& itemArgs)
{
    Add_Helper(itemArgs, dynamic_cast<OutputItemArgs const&>(itemArgs).autoShift.Get());
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::Remove(Zu::Params::Group const& args)
{
    OutputId const& id = dynamic_cast<OutputItem const&>(args).outputId.Get();
    if (id == OutputItem::DEFAULT_OUTPUT_ID)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    Zu::Locker const guard(lock);
    uint64 const found = core.FindPlace(id);
    if (!core.HasIdAt(found, id))
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    core.Erase(found);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
uint64 ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::Count() const
{
    return core.Count();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
OutputItem const& ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::At(uint64 index) const
{
    Zu::Locker const guard(lock);
    if (index > outputs.map.Count())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    return outputs.map.At(index); // the array refuses the count itself, with another status
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::Clear()
{
    Zu::Locker const guard(lock);
    core.Clear();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
std::vector<std::string> ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::DataSourceList() const
{
    Zu::Locker const guard(lock);
    return core.Sources();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::CompactId()
{
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::UpdateId(Zu::Params::Group& outputsArgs)
{
    UpdateId_Helper(outputsArgs, true);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::OverlapInsert(uint64 /*index*/,
                                                                                         OutputItem const& /*item*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED, "Overlap of output id not supported");
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
IProtocolOutput::ZuProtocolOutputDataOverlapState
ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::GetOverlappingState(
    Zu::Params::Group const& item) const
{
    OutputId const& id = dynamic_cast<OutputItem const&>(item).outputId.Get();
    Zu::Locker const guard(lock);
    return core.HasId(id) ? 1 : 0;
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
bool ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::IsDataShiftSupported() const
{
    return false;
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
uint64
ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::BSearchForInsert(OutputItem const& item) const
{
    Zu::Locker const guard(lock);
    return core.FindPlace(item.outputId.Get());
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
bool ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::IsDuplicateDataSource(
    OutputItem const& item) const
{
    Zu::Locker const guard(lock);
    return core.HasSource(item.source.Get());
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
std::vector<PlainOutputItem<typename OutputItem::OutputId>> const&
ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::CopiedItems() const
{
    return dynamic_cast<PlainItems<OutputItem> const&>(core.List()).items;
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::BecomeCopyOf(
    ProtocolOutputBase const& original, RefusalNotes& newNotes)
{
    auto copies = std::make_unique<PlainItems<OutputItem>>();
    {
        Zu::Locker const guard(original.lock);
        uint64 const count = original.outputs.map.Count();
        copies->items.reserve(count);
        for (uint64 i = 0; i < count; ++i)
        {
            copies->items.push_back(PlainItems<OutputItem>::CopyOf(original.outputs.map.At(i)));
            copies->items.back().origin = i;
        }
    }
    Zu::Locker const guard(lock);
    core.Use(std::move(copies));
    notes = &newNotes;
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::Add_Helper(Zu::Params::Group const& group,
                                                                                      bool autoShift)
{
    auto const& item = dynamic_cast<OutputItem const&>(group);
    std::string const& source = item.source.Get();
    OutputMapRefusal const refusals(notes);
    if (!item.IsComplete())
    {
        refusals.OfIncompleteItem(ZU_FUNCTION_LABEL, source);
    }
    Zu::Locker const guard(lock);
    uint64 const place = core.FindPlace(item.outputId.Get());
    if (place < core.List().Count() && core.List().IsSame(place, item))
    {
        return;
    }
    if (core.HasSource(source))
    {
        refusals.OfKnownSource(ZU_FUNCTION_LABEL, source);
    }
    if (GetOverlappingState(group) != 1)
    {
        InsertItem(place, item);
    }
    else if (!IsDataShiftSupported() || autoShift)
    {
        OverlapInsert(place, item); // a kind that cannot shift refuses here
    }
    else
    {
        refusals.OfTakenId(ZU_FUNCTION_LABEL, source);
    }
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::UpdateId_Helper(Zu::Params::Group& group,
                                                                                           bool checkTarget)
{
    auto& args = dynamic_cast<OutputsArgs&>(group);
    OutputMapRefusal::UnlessTwoIds(ZU_FUNCTION_LABEL, args.map.Count());
    OutputMapRefusal const refusals(notes);
    OutputItem& moved = args.map.At(1);
    OutputId const oldId = args.map.At(0).outputId.Get();
    OutputId const newId = moved.outputId.Get();
    if (oldId == OutputItem::DEFAULT_OUTPUT_ID || newId == OutputItem::DEFAULT_OUTPUT_ID)
    {
        refusals.OfMissingId(ZU_FUNCTION_LABEL);
    }
    if (oldId == newId)
    {
        return;
    }
    bool autoShift = false;
    if constexpr (requires { args.autoShift; }) // not all kinds can shift
    {
        autoShift = args.autoShift.Get();
    }

    Zu::Locker const guard(lock);
    if (checkTarget && core.HasId(newId))
    {
        ZU_THROW(Zu::Status::ID_CONFLICT);
    }
    uint64 const found = core.FindPlace(oldId);
    if (!core.HasIdAt(found, oldId))
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    core.List().CopyTo(moved, found);
    moved.outputId.Set(newId);
    if (GetOverlappingState(moved) == 1 && IsDataShiftSupported() && !(autoShift && HasRoomToShift(newId)))
    {
        refusals.OfMoveToTakenId(ZU_FUNCTION_LABEL, moved.source.Get());
    }
    // From here on the item is in the argument alone: a refusal at the new id loses it.
    core.Erase(found);
    Add_Helper(moved, autoShift);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::ShiftOutputMap(uint64 index)
{
    if (core.List().Count() >= maxCount)
    {
        ZU_THROW(Zu::Status::FULL);
    }
    if (index > core.List().Count())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    core.Shift(index);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::InsertItem(uint64 index,
                                                                                      OutputItem const& item)
{
    if (index == core.List().Count() && index < maxCount)
    {
        core.Append(item); // the usual case, since saved maps are in order: no item has to make room
        return;
    }
    ShiftOutputMap(index);
    core.Put(index, item);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
bool ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::HasRoomToShift(OutputId const& id)
{
    if constexpr (std::integral<OutputId>)
    {
        return uint64{id} + 1 < OutputItem::DEFAULT_OUTPUT_ID; // the item that gives way needs a valid id
    }
    else
    {
        return false;
    }
}

} // namespace ZuControl::ControlProtocol
