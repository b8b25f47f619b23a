#pragma once

#include "ZuCore/ResultItem.h"
#include "ZuCore/ResultSetObject.h"
#include "wApi/wPrefetch.h"
#include "wApi/wStatus.h"

namespace ZuCore
{

/// The results of one frame, in order. A counted object (see wApi/wObject.h).
///
/// One thread fills it; once it is published nobody changes it, and any thread may read it and drop the last reference.
/// The items lie in the set's own memory, and the memory of sets that have gone is used again: in steady state neither a set
/// nor an item costs an allocation.
using ResultSet = ResultSetObject*;

extern ZUPLATFORM_API wClass const ResultSet_Class;

/// A new empty set with one reference. The allocator is passed through; null is the default one. 1 on success.
ZUPLATFORM_API wStatus ResultSet_Construct(ResultSet* set, void* allocator);

/// Makes room for `count` items in all. 1 on success.
ZUPLATFORM_API wStatus ResultSet_Reserve(ResultSet set, uint64 count);

/// Appends an item. On success, 1, the set takes over one reference to each of the two objects; otherwise both stay the
/// caller's. The last argument is reserved and 0. -997 for null.
inline wStatus ResultSet_Add(ResultSet set, wMsgInfo* msgInfo, ResultInfo resultInfo, uint64 /*reserved*/) noexcept
{
    if (set == nullptr || msgInfo == nullptr || resultInfo == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (set->next == set->endOfRoom)
    {
        if (wStatus const status = set->OpenRoom(); status != Zu::Status::SUCCESS)
        {
            return status;
        }
    }
    wPrefetch_ForWrite(set->next, ResultSetObject::FETCHED_AHEAD); // it is in the cache of whoever gave the set back
    *set->next = {msgInfo, resultInfo};
    ++set->next;
    ++set->count;
    return Zu::Status::SUCCESS;
}

inline uint64 ResultSet_Count(ResultSetObject const* set) noexcept
{
    return set != nullptr ? set->count : 0;
}

/// The item, borrowed from the set, where it stays until the set goes; null for an index that is out of range.
inline ResultItem ResultSet_At(ResultSetObject const* set, uint64 index) noexcept
{
    if (index >= ResultSet_Count(set))
    {
        return nullptr;
    }
    return const_cast<ResultSet>(set)->Item(index); // sets are never constant objects; an item cannot be changed
}

/// Whether the set comes from a live simulation and not from the sensor. A new set does not.
inline bool ResultSet_FromLiveSimulation(ResultSetObject const* set) noexcept
{
    return set != nullptr && set->fromLiveSimulation;
}

ZUPLATFORM_API void ResultSet_SetFromLiveSimulation(ResultSet set, bool fromLiveSimulation) noexcept;

} // namespace ZuCore
