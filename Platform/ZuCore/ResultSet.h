#pragma once

#include "ZuCore/ResultItem.h"

namespace ZuCore
{

struct ResultSetObject;

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
ZUPLATFORM_API wStatus ResultSet_Add(ResultSet set, wMsgInfo* msgInfo, ResultInfo resultInfo, uint64 reserved);

ZUPLATFORM_API uint64 ResultSet_Count(ResultSetObject const* set) noexcept;

/// The item, borrowed from the set, where it stays until the set goes; null for an index that is out of range.
ZUPLATFORM_API ResultItem ResultSet_At(ResultSetObject const* set, uint64 index) noexcept;

/// Whether the set comes from a live simulation and not from the sensor. A new set does not.
ZUPLATFORM_API bool ResultSet_FromLiveSimulation(ResultSetObject const* set) noexcept;

ZUPLATFORM_API void ResultSet_SetFromLiveSimulation(ResultSet set, bool fromLiveSimulation) noexcept;

} // namespace ZuCore
