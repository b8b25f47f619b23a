#pragma once

#include "ZuCore/ResultItem.h"
#include "ZuCore/ResultSetObject.h"
#include "wApi/wPrefetch.h"
#include "wApi/wTypes.h"

namespace ZuCore
{

/// The results of one frame, in order. A counted object (see wApi/wObject.h).
///
/// One thread fills the set. After publication it must not change; any thread may then read it and release the last
/// reference. The items lie in the memory of the set, and the memory of released sets is reused: in steady state
/// neither a set nor an item costs an allocation.
using ResultSet = ResultSetObject*;

extern ZUPLATFORM_API wClass const ResultSet_Class;

/// Makes an empty set with one reference. The allocator is ignored. Returns `Zu::Status::BAD_ARGUMENT` if `set` is null
/// and `Zu::Status::FAILURE` if memory runs out.
ZUPLATFORM_API wStatus ResultSet_Construct(ResultSet* set, void* allocator);

/// Makes room for `count` items in total. Returns `Zu::Status::BAD_ARGUMENT` for null, `Zu::Status::FULL` beyond the
/// largest possible set and `Zu::Status::FAILURE` if memory runs out.
ZUPLATFORM_API wStatus ResultSet_Reserve(ResultSet set, uint64 count);

/// Appends an item. On success the set takes over one of the caller's references to each of the two objects; after a
/// failure both stay the caller's. The last argument is reserved and 0. Returns `Zu::Status::BAD_ARGUMENT` for null and
/// the statuses of `ResultSet_Reserve` if there is no room.
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
    // The thread that released the set may have it in its cache.
    wPrefetch_ForWrite(set->next, ResultSetObject::FETCHED_AHEAD);
    *set->next = {msgInfo, resultInfo};
    ++set->next;
    ++set->count;
    return Zu::Status::SUCCESS;
}

inline uint64 ResultSet_Count(ResultSetObject const* set) noexcept
{
    return set != nullptr ? set->count : 0;
}

/// Returns the item, borrowed from the set; valid as long as the set. Null for an index out of range.
inline ResultItem ResultSet_At(ResultSetObject const* set, uint64 index) noexcept
{
    if (index >= ResultSet_Count(set))
    {
        return nullptr;
    }
    // Allowed: sets are never const objects, and an item cannot be changed.
    return const_cast<ResultSet>(set)->Item(index);
}

/// Whether the set comes from a live simulation instead of the sensor. False for a new set and for null.
inline bool ResultSet_FromLiveSimulation(ResultSetObject const* set) noexcept
{
    return set != nullptr && set->fromLiveSimulation;
}

/// Marks the set before its publication. Does nothing for null.
ZUPLATFORM_API void ResultSet_SetFromLiveSimulation(ResultSet set, bool fromLiveSimulation) noexcept;

} // namespace ZuCore
