#include "ZuCore/ResultSet.h"

#include "wApi/wMutex.h"
#include "wApi/wPrefetch.h"
#include "wApi/wTypes.h"
#include "wBeacon/wMsgInfo.h"

#include <atomic>
#include <bit>

namespace ZuCore
{

namespace
{

constexpr uint64 OWN_ITEMS = ResultSetObject::OWN_ITEMS;
constexpr uint64 CACHE_LINE = 64;
constexpr uint64 FETCHED_LINES = 5;
constexpr uint64 KEPT_CHUNKS = 5; // an idle set keeps this many chunks and frees larger ones

// The limit for the memory of all idle sets: enough for the sets of 100 items that 16 protocols hold after a burst of
// 100 frames.
constexpr uint64 KEPT_BYTES = 16 * 1024 * 1024;

/// Returns the chunk of an item. Chunk k holds OWN_ITEMS << k items, from index OWN_ITEMS * (2^k - 1) on.
constexpr uint64 ChunkOf(uint64 index)
{
    return static_cast<uint64>(std::bit_width(index / OWN_ITEMS + 1)) - 1;
}

constexpr uint64 FirstOf(uint64 chunk)
{
    return OWN_ITEMS * ((uint64{1} << chunk) - 1);
}

constexpr uint64 MAX_ITEMS = FirstOf(ResultSetObject::MAX_CHUNKS);

void MakeItems(ResultSetObject& set, ResultSetObject::ItemRoom* items, ResultItemParts const* parts, uint64 count)
{
    for (uint64 i = 0; i < count; ++i)
    {
        new (items[i].bytes) ResultItemObject(set, parts[i]);
    }
}

/// The idle sets, which wait for reuse, as a stack: the last set that was released is on top.
///
/// Many threads release sets and must not delay the publishing thread: they push without a lock.
class IdleSets
{
public:
    /// Takes the top set. Returns null if there is none.
    ResultSet Take()
    {
        // Only one thread at a time takes. The top set therefore stays in the stack until the exchange, and so does the
        // set below it: `nextIdle` is still right when the exchange succeeds.
        Zu::MutexLock const guard(lock);
        ResultSet taken = top.load(std::memory_order_acquire);
        while (taken != nullptr && !top.compare_exchange_weak(taken, taken->nextIdle, std::memory_order_acquire))
        {
        }
        if (taken != nullptr)
        {
            bytes.fetch_sub(taken->Bytes(), std::memory_order_relaxed);
            FetchFront(taken->nextIdle);
        }
        return taken;
    }

    /// Pushes a set. Returns false if the idle sets take up too much memory already.
    bool Keep(ResultSet set)
    {
        uint64 const added = set->Bytes();
        if (bytes.fetch_add(added, std::memory_order_relaxed) + added > KEPT_BYTES)
        {
            bytes.fetch_sub(added, std::memory_order_relaxed);
            return false;
        }
        set->nextIdle = top.load(std::memory_order_relaxed);
        while (!top.compare_exchange_weak(set->nextIdle, set, std::memory_order_release, std::memory_order_relaxed))
        {
        }
        return true;
    }

private:
    /// Prefetches the first cache lines of the set that will probably be taken next.
    static void FetchFront(ResultSet set)
    {
        for (uint64 line = 0; line < FETCHED_LINES; ++line)
        {
            wPrefetch_ForWrite(set, line * CACHE_LINE);
        }
    }

    Zu::Mutex lock;                      // a leaf: held while a set is taken
    std::atomic<ResultSet> top{nullptr}; // publishes the sets below it
    std::atomic<uint64> bytes{0};
};

/// Never destroyed: destructors of statics may release sets.
IdleSets& Idle()
{
    static auto* const idle = new IdleSets;
    return *idle;
}

} // namespace

ResultSetObject::ResultSetObject() noexcept : wObject(ResultSet_Class)
{
    MakeItems(*this, own.data(), ownParts.data(), OWN_ITEMS);
    TurnToOwnRoom();
}

wStatus ResultSetObject::OpenRoom() noexcept
{
    if (count == MAX_ITEMS)
    {
        return Zu::Status::FULL;
    }
    if (!Reserve(count + 1))
    {
        return Zu::Status::FAILURE;
    }
    uint64 const number = ChunkOf(count); // at least 1: `count` is at least OWN_ITEMS here
    next = &chunks[number].parts[count - FirstOf(number)];
    endOfRoom = next + (FirstOf(number + 1) - count);
    return Zu::Status::SUCCESS;
}

bool ResultSetObject::Reserve(uint64 wanted) noexcept
{
    while (capacity < wanted)
    {
        uint64 const number = ChunkOf(capacity);
        if (!MakeChunk(number))
        {
            return false;
        }
        capacity = FirstOf(number + 1);
    }
    return true;
}

void ResultSetObject::Clear() noexcept
{
    ForEachParts([](ResultItemParts const& parts) {
        wObject_Release(parts.msgInfo);
        wObject_Release(parts.info);
    });
    count = 0;
    TurnToOwnRoom();
    fromLiveSimulation = false;
}

void ResultSetObject::GiveBackLargeChunks() noexcept
{
    if (capacity <= FirstOf(KEPT_CHUNKS))
    {
        return;
    }
    for (uint64 number = KEPT_CHUNKS; number < MAX_CHUNKS && chunks[number].parts != nullptr; ++number)
    {
        chunks[number] = {};
    }
    capacity = FirstOf(KEPT_CHUNKS);
}

uint64 ResultSetObject::Bytes() const noexcept
{
    return sizeof *this + (capacity - OWN_ITEMS) * (sizeof(ResultItemParts) + sizeof(ItemRoom));
}

ResultItem ResultSetObject::ItemBeyondOwn(uint64 index) noexcept
{
    uint64 const number = ChunkOf(index);
    return ItemIn(chunks[number].items[index - FirstOf(number)]);
}

void ResultSetObject::TurnToOwnRoom() noexcept
{
    next = ownParts.data();
    endOfRoom = next + OWN_ITEMS;
}

bool ResultSetObject::MakeChunk(uint64 number) noexcept
{
    uint64 const items = OWN_ITEMS << number;
    Chunk made{std::unique_ptr<ResultItemParts[]>(new (std::nothrow) ResultItemParts[items]),
               std::unique_ptr<ItemRoom[]>(new (std::nothrow) ItemRoom[items])};
    if (made.parts == nullptr || made.items == nullptr)
    {
        return false;
    }
    MakeItems(*this, made.items.get(), made.parts.get(), items);
    chunks[number] = std::move(made);
    return true;
}

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

void ResultSet_SetFromLiveSimulation(ResultSet set, bool fromLiveSimulation) noexcept
{
    if (set != nullptr)
    {
        set->fromLiveSimulation = fromLiveSimulation;
    }
}

} // namespace ZuCore
