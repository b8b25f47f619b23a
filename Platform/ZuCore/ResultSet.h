#pragma once

#include "ZuCore/ResultItem.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>

namespace ZuCore
{

/// The object behind a `ResultSet`. It is defined here so that the accessors are inline; only `ResultSet_Construct`
/// makes one.
///
/// The items lie in chunks and never move, because callers hold handles to them. Adding an item writes only its parts.
/// The `ResultItemObject` behind the handle is constructed together with the chunk and not written again: a set that
/// another core released costs 16 bytes of cold memory per item. The members that change with every use lie together at
/// the front.
struct alignas(64) ResultSetObject final : wObject
{
    static constexpr uint64 OWN_ITEMS = 64; // items in the set's own block; a power of two, as in the chunks after it
    static constexpr uint64 MAX_CHUNKS = 26;

    /// Storage for one item, which is constructed together with the chunk around it.
    struct ItemRoom
    {
        alignas(ResultItemObject) std::byte bytes[sizeof(ResultItemObject)];
    };

    struct Chunk
    {
        std::unique_ptr<ResultItemParts[]> parts;
        std::unique_ptr<ItemRoom[]> items;
    };

    ResultSetObject() noexcept;
    ~ResultSetObject() = default;

    ResultSetObject(ResultSetObject const&) = delete;
    ResultSetObject& operator=(ResultSetObject const&) = delete;

    /// Requires `index` < `count`.
    ResultItem Item(uint64 index) noexcept
    {
        return index < OWN_ITEMS ? ItemIn(own[index]) : ItemBeyondOwn(index);
    }

    /// Calls `visit` with the parts of each item, in order.
    template <typename Visit>
    void ForEachParts(Visit const& visit) const
    {
        uint64 left = count;
        for (uint64 number = 0; left > 0; ++number)
        {
            uint64 const size = std::min(left, OWN_ITEMS << number);
            ResultItemParts const* const parts = number == 0 ? ownParts.data() : chunks[number].parts.get();
            std::for_each(parts, parts + size, visit);
            left -= size;
        }
    }

    /// Appends an item without adding references to its parts. Returns the statuses of `OpenRoom`.
    wStatus Append(ResultItemParts const& parts) noexcept
    {
        if (next == endOfRoom)
        {
            if (wStatus const status = OpenRoom(); status != Zu::Status::SUCCESS)
            {
                return status;
            }
        }
        *next = parts;
        ++next;
        ++count;
        return Zu::Status::SUCCESS;
    }

    /// Selects the chunk for the next item when the present chunk is full; makes it if needed. Returns
    /// `Zu::Status::FULL` beyond the largest possible set and `Zu::Status::FAILURE` if memory runs out.
    ZUPLATFORM_API wStatus OpenRoom() noexcept;

    /// Makes room for `wanted` items in total. Returns false if memory runs out.
    bool Reserve(uint64 wanted) noexcept;

    /// Releases the parts of all items and empties the set. Keeps the chunks.
    void Clear() noexcept;
    void GiveBackLargeChunks() noexcept;
    uint64 Bytes() const noexcept;

    uint64 count = 0;
    ResultItemParts* next = nullptr; // where the next item goes; equals `endOfRoom` when the chunk is full
    ResultItemParts* endOfRoom = nullptr;
    uint64 capacity = OWN_ITEMS;
    bool fromLiveSimulation = false;
    ResultSetObject* nextIdle = nullptr; // next set in the stack of idle sets

private:
    static ResultItem ItemIn(ItemRoom& room) noexcept
    {
        return std::launder(reinterpret_cast<ResultItem>(room.bytes));
    }

    ZUPLATFORM_API ResultItem ItemBeyondOwn(uint64 index) noexcept;
    void TurnToOwnRoom() noexcept;
    bool MakeChunk(uint64 number) noexcept;

    std::array<ResultItemParts, OWN_ITEMS> ownParts;
    std::array<ItemRoom, OWN_ITEMS> own;
    std::array<Chunk, MAX_CHUNKS> chunks; // the first stays empty: `own` takes its place
};

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
    return set->Append({msgInfo, resultInfo});
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
