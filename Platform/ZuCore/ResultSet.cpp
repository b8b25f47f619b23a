#include "ZuCore/ResultSet.h"

#include "ZuCore/ResultItemObject.h"
#include "wApi/wStatus.h"

#include <array>
#include <bit>
#include <memory>
#include <mutex>
#include <new>

namespace ZuCore
{

namespace
{

constexpr uint64 OWN_ITEMS = 64; // in the set's own block; a power of two, and so are the chunks that follow
constexpr uint64 MAX_CHUNKS = 26;
constexpr uint64 KEPT_CHUNKS = 5; // of a set that waits for reuse: larger ones are given back

// Sets that wait for reuse: as many as a thousand frames a second for sixteen protocols have under way, and no more memory
// than this.
constexpr uint64 KEPT_SETS = 1024;
constexpr uint64 KEPT_BYTES = 8 * 1024 * 1024;

/// Room for items that are made one by one, and never move: handles to them are out.
struct ItemRoom
{
    alignas(ResultItemObject) std::byte bytes[sizeof(ResultItemObject)];
};

/// Chunk k holds OWN_ITEMS << k items, from number OWN_ITEMS * (2^k - 1) on.
constexpr uint64 ChunkOf(uint64 index)
{
    return static_cast<uint64>(std::bit_width(index / OWN_ITEMS + 1)) - 1;
}

constexpr uint64 FirstOf(uint64 chunk)
{
    return OWN_ITEMS * ((uint64{1} << chunk) - 1);
}

constexpr uint64 MAX_ITEMS = FirstOf(MAX_CHUNKS);

} // namespace

struct ResultSetObject final : wObject
{
    ResultSetObject() : wObject(ResultSet_Class)
    {
    }

    ItemRoom* Room(uint64 index)
    {
        if (index < OWN_ITEMS)
        {
            return &own[index];
        }
        uint64 const chunk = ChunkOf(index);
        return &chunks[chunk][index - FirstOf(chunk)];
    }

    ResultItem Item(uint64 index)
    {
        return std::launder(reinterpret_cast<ResultItem>(Room(index)->bytes));
    }

    /// Turns to the room behind the last item when the present piece of it is full; false when there is no memory.
    bool OpenRoom()
    {
        if (!Reserve(count + 1))
        {
            return false;
        }
        uint64 const chunk = count < OWN_ITEMS ? 0 : ChunkOf(count);
        next = Room(count);
        endOfRoom = next + (FirstOf(chunk + 1) - count);
        return true;
    }

    bool Reserve(uint64 wanted)
    {
        while (capacity < wanted)
        {
            uint64 const chunk = ChunkOf(capacity);
            chunks[chunk].reset(new (std::nothrow) ItemRoom[OWN_ITEMS << chunk]);
            if (chunks[chunk] == nullptr)
            {
                return false;
            }
            capacity = FirstOf(chunk + 1);
        }
        return true;
    }

    /// Empties the set; the room stays.
    void Clear() noexcept
    {
        for (uint64 i = 0; i < count; ++i)
        {
            Item(i)->ReleaseParts();
        }
        count = 0;
        next = own;
        endOfRoom = own + OWN_ITEMS;
        fromLiveSimulation = false;
    }

    uint64 Bytes() const noexcept
    {
        return sizeof *this + (capacity - OWN_ITEMS) * sizeof(ItemRoom);
    }

    void GiveBackLargeChunks() noexcept
    {
        for (uint64 chunk = KEPT_CHUNKS; chunk < MAX_CHUNKS && chunks[chunk] != nullptr; ++chunk)
        {
            chunks[chunk].reset();
        }
        capacity = std::min(capacity, FirstOf(KEPT_CHUNKS));
    }

    uint64 count = 0;
    ItemRoom* next = own; // where the next item goes, unless this is the end of the piece of room
    ItemRoom* endOfRoom = own + OWN_ITEMS;
    uint64 capacity = OWN_ITEMS;
    bool fromLiveSimulation = false;
    std::array<std::unique_ptr<ItemRoom[]>, MAX_CHUNKS> chunks; // the first is never made: it is `own`
    ItemRoom own[OWN_ITEMS];
};

namespace
{

/// Sets that wait for reuse, the one that was in use last on top.
class IdleSets
{
public:
    /// Null when none waits.
    ResultSet Take()
    {
        std::scoped_lock const guard(lock);
        if (size == 0)
        {
            return nullptr;
        }
        bytes -= sets[--size]->Bytes();
        return sets[size];
    }

    /// False when enough of them wait.
    bool Keep(ResultSet set)
    {
        std::scoped_lock const guard(lock);
        if (size == KEPT_SETS || bytes + set->Bytes() > KEPT_BYTES)
        {
            return false;
        }
        bytes += set->Bytes();
        sets[size++] = set;
        return true;
    }

private:
    std::mutex lock; // a leaf: guards the members below
    uint64 size = 0;
    uint64 bytes = 0;
    std::array<ResultSet, KEPT_SETS> sets{};
};

/// Never destroyed: a set may be released by what is destroyed after all else.
IdleSets& Idle()
{
    static auto* const idle = new IdleSets;
    return *idle;
}

} // namespace

wClass const ResultSet_Class{"ResultSet", nullptr, [](wObject* object) {
                                 auto* const set = static_cast<ResultSet>(object);
                                 set->Clear();
                                 set->GiveBackLargeChunks();
                                 if (!Idle().Keep(set))
                                 {
                                     delete set;
                                 }
                             }};

wStatus ResultSet_Construct(ResultSet* set, void* /*allocator*/)
{
    if (set == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (ResultSet const idle = Idle().Take(); idle != nullptr)
    {
        wObject_Revive(idle);
        *set = idle;
        return Zu::Status::SUCCESS;
    }
    auto* const made = new (std::nothrow) ResultSetObject;
    if (made == nullptr)
    {
        return Zu::Status::FAILURE;
    }
    *set = made;
    return Zu::Status::SUCCESS;
}

wStatus ResultSet_Reserve(ResultSet set, uint64 count)
{
    if (set == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (count > MAX_ITEMS)
    {
        return Zu::Status::FULL;
    }
    return set->Reserve(count) ? Zu::Status::SUCCESS : Zu::Status::FAILURE;
}

wStatus ResultSet_Add(ResultSet set, wMsgInfo* msgInfo, ResultInfo resultInfo, uint64 /*reserved*/)
{
    if (set == nullptr || msgInfo == nullptr || resultInfo == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (set->next == set->endOfRoom)
    {
        if (set->count == MAX_ITEMS)
        {
            return Zu::Status::FULL;
        }
        if (!set->OpenRoom())
        {
            return Zu::Status::FAILURE;
        }
    }
    new (set->next->bytes) ResultItemObject(*set, msgInfo, resultInfo);
    ++set->next;
    ++set->count;
    return Zu::Status::SUCCESS;
}

uint64 ResultSet_Count(ResultSetObject const* set) noexcept
{
    return set != nullptr ? set->count : 0;
}

ResultItem ResultSet_At(ResultSetObject const* set, uint64 index) noexcept
{
    if (index >= ResultSet_Count(set))
    {
        return nullptr;
    }
    return const_cast<ResultSet>(set)->Item(index); // sets are never constant objects; an item cannot be changed
}

bool ResultSet_FromLiveSimulation(ResultSetObject const* set) noexcept
{
    return set != nullptr && set->fromLiveSimulation;
}

void ResultSet_SetFromLiveSimulation(ResultSet set, bool fromLiveSimulation) noexcept
{
    if (set != nullptr)
    {
        set->fromLiveSimulation = fromLiveSimulation;
    }
}

} // namespace ZuCore
