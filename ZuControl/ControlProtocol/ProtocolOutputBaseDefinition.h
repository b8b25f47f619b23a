#pragma once

// The operations of ProtocolOutputBase, for the files that instantiate it.

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/ControlProtocol/ProtocolOutputBase.h"

#include <concepts>

namespace ZuControl::ControlProtocol
{

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::ProtocolOutputBase(uint16 mostItems)
    : maxCount(mostItems)
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
    auto const& item = dynamic_cast<OutputItem const&>(args);
    if (item.outputId.Get() == OutputItem::DEFAULT_OUTPUT_ID)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    Zu::Locker const guard(lock);
    uint64 const found = Lookup().FindPlace(item.outputId.Get());
    if (!Lookup().HasIdAt(found, item.outputId.Get()))
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    EraseItem(found);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
uint64 ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::Count() const
{
    return count.load(std::memory_order_relaxed);
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
    BeginChange();
    outputs.map.Clear();
    lookup.Clear();
    EndChange();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
std::vector<std::string> ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::DataSourceList() const
{
    std::vector<std::string> sources;
    Zu::Locker const guard(lock);
    uint64 const itemCount = outputs.map.Count();
    sources.reserve(itemCount);
    for (uint64 i = 0; i < itemCount; ++i)
    {
        sources.push_back(outputs.map.At(i).source.Get());
    }
    return sources;
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
    return Lookup().HasIdAt(Lookup().FindPlace(id), id) ? 1 : 0;
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
    return Lookup().FindPlace(item.outputId.Get());
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
bool ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::IsDuplicateDataSource(
    OutputItem const& item) const
{
    Zu::Locker const guard(lock);
    return HasSource(item.source.Get());
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::Add_Helper(Zu::Params::Group const& group,
                                                                                      bool autoShift)
{
    auto const& item = dynamic_cast<OutputItem const&>(group);
    char const* const source = item.source.Get().c_str();
    if (!item.IsComplete())
    {
        ZU_LOG_USER_ERROR("Data source %1$s is invalid", source);
        ZU_LOG_ERROR("Data source %s is invalid", source);
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    Zu::Locker const guard(lock);
    uint64 const place = Lookup().FindPlace(item.outputId.Get());
    if (place < outputs.map.Count() && outputs.map.At(place).IsSameOutput(item))
    {
        return;
    }
    if (HasSource(item.source.Get()))
    {
        ZU_LOG_USER_WARNING("Data source %1$s already exists", source);
        ZU_LOG_WARNING("Data source %s already exists", source);
        ZU_THROW(Zu::Status::ALREADY_EXISTS);
    }
    if (GetOverlappingState(group) != 1)
    {
        InsertItem(place, item);
        return;
    }
    if (!IsDataShiftSupported() || autoShift)
    {
        OverlapInsert(place, item); // a kind that cannot shift refuses here
        return;
    }
    ZU_LOG_USER_ERROR(
        "Unable to add data source %1$s. The specified address would cause the selected source to overlap "
        "addresses used by an existing data source.",
        source);
    ZU_LOG_ERROR("Unable to add data source %s. The specified address would cause the selected source to overlap "
                 "addresses used by an existing data source.",
                 source);
    ZU_THROW(Zu::Status::BAD_ARGUMENT);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::UpdateId_Helper(Zu::Params::Group& group,
                                                                                           bool checkTarget)
{
    auto& args = dynamic_cast<OutputsArgs&>(group);
    CheckIdsToUpdate(args);
    OutputItem& moved = args.map.At(1);
    OutputId const oldId = args.map.At(0).outputId.Get();
    OutputId const newId = moved.outputId.Get();
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
    if (checkTarget && Lookup().HasIdAt(Lookup().FindPlace(newId), newId))
    {
        ZU_THROW(Zu::Status::ID_CONFLICT);
    }
    uint64 const found = Lookup().FindPlace(oldId);
    if (!Lookup().HasIdAt(found, oldId))
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    moved.TakeOver(outputs.map.At(found));
    moved.outputId.Set(newId);
    if (GetOverlappingState(moved) == 1 && IsDataShiftSupported() && !(autoShift && HasRoomToShift(newId)))
    {
        char const* const source = moved.source.Get().c_str();
        ZU_LOG_USER_ERROR(
            "Unable to update output id for data source %1$s. The specified address would cause the selected "
            "source to overlap addresses used by an existing data source.",
            source); // unlike the two texts below, without brackets round the source
        ZU_LOG_ERROR("Unable to update output id for data source [%s]. The specified address would cause the selected "
                     "source to overlap addresses used by an existing data source.",
                     source);
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "Unable to update output id for data source [%1$s]. The specified address would cause the selected "
                 "source to overlap addresses used by an existing data source.",
                 source);
    }
    // From here on the item is in the argument alone: a refusal at the new id loses it.
    EraseItem(found);
    Add_Helper(moved, autoShift);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::ShiftOutputMap(uint64 index)
{
    uint64 const oldCount = outputs.map.Count();
    if (oldCount >= maxCount)
    {
        ZU_THROW(Zu::Status::FULL);
    }
    if (index > oldCount)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    BeginChange();
    AddEmptyItem();
    uint64 next = oldCount; // the next place to write; its item has been copied one place up already
    try
    {
        for (; next > index; --next)
        {
            // Copies values and does not move elements: observers may be attached to the elements.
            outputs.map.At(next).TakeOver(outputs.map.At(next - 1));
        }
        OutputItem const& opened = outputs.map.At(index);
        lookup.Insert(index, opened.outputId.Get(), opened.source.Get());
    }
    catch (...)
    {
        DropItem(next);
        throw;
    }
    EndChange();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::AppendItem(OutputItem const& item)
{
    BeginChange();
    OutputItem& added = AddEmptyItem();
    uint64 const index = outputs.map.Count() - 1;
    try
    {
        added.TakeOver(item);
        lookup.Insert(index, item.outputId.Get(), item.source.Get());
    }
    catch (...)
    {
        DropItem(index);
        throw;
    }
    EndChange();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::InsertItem(uint64 index,
                                                                                      OutputItem const& item)
{
    uint64 const oldCount = outputs.map.Count();
    if (index == oldCount && oldCount < maxCount)
    {
        AppendItem(item); // the usual case, since saved maps are in order: nothing has to make room
        return;
    }
    ShiftOutputMap(index);
    PutItem(index, item);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::PutItem(uint64 index, OutputItem const& item)
{
    BeginChange();
    try
    {
        OutputItem& place = outputs.map.At(index);
        lookup.Replace(index, item.outputId.Get(), place.source.Get(), item.source.Get());
        place.TakeOver(item);
    }
    catch (...)
    {
        DropItem(index);
        throw;
    }
    EndChange();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::SetOutputId(uint64 index, OutputId const& id)
{
    BeginChange();
    outputs.map.At(index).outputId.Set(id);
    lookup.SetId(index, id);
    EndChange();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::EraseItem(uint64 index)
{
    BeginChange();
    lookup.Erase(index, outputs.map.At(index).source.Get()); // `At` throws for an index behind the last item
    outputs.map.Remove(index);
    EndChange();
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
bool ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::HasSource(std::string const& source) const
{
    return Lookup().HasSource(source);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::CheckIdsToUpdate(OutputsArgs const& args)
{
    if (args.map.Count() != 2)
    {
        ZU_THROW(
            Zu::Status::BAD_ARGUMENT,
            "There should be exactly 2 output id entries but there are %1$d. The first output id should contain the "
            "original id to change from and the second output id should contain the new id to change to.",
            static_cast<int>(args.map.Count()));
    }
    if (args.map.At(0).outputId.Get() == OutputItem::DEFAULT_OUTPUT_ID ||
        args.map.At(1).outputId.Get() == OutputItem::DEFAULT_OUTPUT_ID)
    {
        ZU_LOG_USER_ERROR("Output id is invalid.");
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Output id is invalid.");
    }
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
bool ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::HasRoomToShift(OutputId const& id) const
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

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
OutputMapIndex<typename OutputItem::OutputId>&
ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::Lookup() const
{
    uint64 const itemCount = outputs.map.Count();
    if (isLookupStale || lookup.Count() != itemCount)
    {
        isLookupStale = true;
        lookup.Clear();
        for (uint64 i = 0; i < itemCount; ++i)
        {
            OutputItem const& item = outputs.map.At(i);
            lookup.Insert(i, item.outputId.Get(), item.source.Get());
        }
        isLookupStale = false;
    }
    return lookup;
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
OutputItem& ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::AddEmptyItem()
{
    uint64 const oldCount = outputs.map.Count();
    try
    {
        return outputs.map.Add();
    }
    catch (...)
    {
        outputs.map.Resize(oldCount); // the element may exist already when there is no memory for its schema
        throw;
    }
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::DropItem(uint64 index)
{
    outputs.map.Remove(index);
    count.store(outputs.map.Count(), std::memory_order_relaxed);
    isLookupStale = true;
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::BeginChange()
{
    Lookup();
    isLookupStale = true; // stays so when the change fails, by an observer's exception or for want of memory
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::EndChange()
{
    isLookupStale = false;
    count.store(outputs.map.Count(), std::memory_order_relaxed);
}

} // namespace ZuControl::ControlProtocol
