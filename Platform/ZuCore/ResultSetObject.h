#pragma once

#include "ZuCore/ResultItem.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

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
    static constexpr uint64 FETCHED_AHEAD = 256; // distance of the prefetch before a write, in bytes

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

} // namespace ZuCore
