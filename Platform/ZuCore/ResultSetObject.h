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

/// What a handle to a set refers to. It is known here so that a question costs no call; `ResultSet_Construct` alone makes it.
///
/// The items lie in chunks of room and never move: handles to them are out. Adding one writes its parts and nothing else. What
/// a handle to it refers to is made together with the room and never written again, so that a set that comes back from another
/// core costs 16 bytes of cold memory an item. What changes with every use of a set lies together at its front.
struct alignas(64) ResultSetObject final : wObject
{
    static constexpr uint64 OWN_ITEMS = 64; // in the set's own block; a power of two, and so are the chunks that follow
    static constexpr uint64 MAX_CHUNKS = 26;
    static constexpr uint64 FETCHED_AHEAD = 256; // bytes of room that are on their way before they are written

    /// Room for one item, which is made when the room around it is.
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

    /// `index` lies below the count.
    ResultItem Item(uint64 index) noexcept
    {
        return index < OWN_ITEMS ? ItemIn(own[index]) : ItemBeyondOwn(index);
    }

    /// Turns to the room behind the last item when the present chunk is full. 1 on success.
    ZUPLATFORM_API wStatus OpenRoom() noexcept;

    /// False when there is no memory.
    bool Reserve(uint64 wanted) noexcept;

    /// Empties the set; the room stays.
    void Clear() noexcept;
    void GiveBackLargeChunks() noexcept;
    uint64 Bytes() const noexcept;

    uint64 count = 0;
    ResultItemParts* next = nullptr; // where the next item goes, unless this is the end of the chunk
    ResultItemParts* endOfRoom = nullptr;
    uint64 capacity = OWN_ITEMS;
    bool fromLiveSimulation = false;
    ResultSetObject* nextIdle = nullptr; // of the sets that wait for reuse

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
    std::array<Chunk, MAX_CHUNKS> chunks; // the first is never made: it is the set's own
};

} // namespace ZuCore
