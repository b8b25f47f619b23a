#include "ZuApi/InternedText.h"

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <array>
#include <atomic>
#include <memory>
#include <utility>
#include <vector>

namespace Zu::Properties::Internal
{

struct InternedText::Entry
{
    explicit Entry(TextKey const& key) : text(key.Text()), hash(key.Hash())
    {
    }

    bool Is(TextKey const& key) const noexcept
    {
        return hash == key.Hash() && text == key.Text();
    }

    std::string const text;
    uint64 const hash;
    std::atomic<uint64> users{1}; // falls to 0, and rises from 0, only under the pool's lock
    // Never reset. The users of a kept entry are not counted: one permanent user stands for them.
    std::atomic<bool> isKept{false};
};

/// The entries that are never freed, for lookup without a lock. Once the table is half full, further literals are
/// counted like other texts.
class InternedText::LiteralTable
{
public:
    /// Returns null for a text that is not in the table.
    Entry* Find(TextKey const& key) const noexcept
    {
        std::size_t slot = key.Hash() % SLOTS;
        Entry* found = slots[slot].load(std::memory_order_acquire);
        while (found != nullptr && !found->Is(key))
        {
            slot = (slot + 1) % SLOTS;
            found = slots[slot].load(std::memory_order_acquire);
        }
        return found;
    }

    /// Adds an entry, unless the table is half full. The user that the caller has just counted becomes the permanent
    /// user. The caller holds the pool's lock.
    void Keep(Entry& entry)
    {
        if (entry.isKept.load(std::memory_order_relaxed) || 2 * (count + 1) > SLOTS)
        {
            return;
        }
        entry.isKept.store(true, std::memory_order_relaxed); // before the slot publishes the entry
        std::size_t slot = entry.hash % SLOTS;
        while (slots[slot].load(std::memory_order_relaxed) != nullptr)
        {
            slot = (slot + 1) % SLOTS;
        }
        slots[slot].store(&entry, std::memory_order_release);
        ++count;
    }

private:
    static constexpr std::size_t SLOTS = 4096; // at least half stay free; the system uses about 500 such texts

    std::array<std::atomic<Entry*>, SLOTS> slots{};
    std::size_t count = 0;
};

/// All texts, in a hash table with open addressing.
struct InternedText::Pool
{
    /// Returns the entry of this text with one more user, or null for the empty text.
    Entry* Take(TextKey const& key)
    {
        if (key.Text().empty())
        {
            return nullptr;
        }
        if (Entry* const kept = literals.Find(key))
        {
            return kept;
        }
        Zu::MutexLock const guard(lock);
        Entry* const taken = TakeCounted(key);
        if (key.IsLiteral())
        {
            literals.Keep(*taken);
        }
        return taken;
    }

    Entry* TakeCounted(TextKey const& key) ZU_REQUIRES(lock)
    {
        if (Entry* const found = slots[SlotOf(key)]; found != nullptr)
        {
            found->users.fetch_add(1, std::memory_order_relaxed);
            return found;
        }
        auto made = std::make_unique<Entry>(key);
        slots[RoomFor(key)] = made.get();
        ++count;
        return made.release();
    }

    /// Returns the slot of the entry with this text, or the free slot where it belongs.
    std::size_t SlotOf(TextKey const& key) const ZU_REQUIRES(lock)
    {
        std::size_t slot = key.Hash() & (slots.size() - 1);
        while (slots[slot] != nullptr && !slots[slot]->Is(key))
        {
            slot = Next(slot);
        }
        return slot;
    }

    std::size_t Next(std::size_t slot) const ZU_REQUIRES(lock)
    {
        return (slot + 1) & (slots.size() - 1);
    }

    /// Returns a free slot for a text that is not in the table. Grows the table so that at least half of the slots stay
    /// free.
    std::size_t RoomFor(TextKey const& key) ZU_REQUIRES(lock)
    {
        if (2 * (count + 1) > slots.size())
        {
            std::vector<Entry*> const old = std::exchange(slots, std::vector<Entry*>(2 * slots.size()));
            for (Entry* const entry : old)
            {
                if (entry != nullptr)
                {
                    slots[SlotOf(TextKey(entry->text))] = entry;
                }
            }
        }
        return SlotOf(key);
    }

    /// Removes an entry and moves later entries of the same probe sequence into the gap.
    void Erase(Entry const& entry) ZU_REQUIRES(lock)
    {
        std::size_t gap = SlotOf(TextKey(entry.text));
        --count;
        for (std::size_t slot = Next(gap); slots[slot] != nullptr; slot = Next(slot))
        {
            std::size_t const mask = slots.size() - 1;
            std::size_t const walked = (slot - slots[slot]->hash) & mask;
            if (walked >= ((slot - gap) & mask))
            {
                slots[gap] = slots[slot];
                gap = slot;
            }
        }
        slots[gap] = nullptr;
    }

    Zu::Mutex lock; // a leaf: no other lock is taken under it
    /// The number of slots is a power of two, and at least half of them are free.
    std::vector<Entry*> slots ZU_GUARDED_BY(lock) = std::vector<Entry*>(1024);
    std::size_t count ZU_GUARDED_BY(lock) = 0;
    LiteralTable literals; // a subset of the entries; changed under the lock, searched without it

    static Pool& Instance()
    {
        // Never freed: texts in static objects may be destroyed after any other static.
        static auto* const pool = new Pool;
        return *pool;
    }
};

InternedText::InternedText(std::string_view text) : entry(Pool::Instance().Take(TextKey(text)))
{
}

InternedText InternedText::Of(TextKey const& key)
{
    return InternedText(Pool::Instance().Take(key));
}

InternedText::InternedText(InternedText const& other) noexcept : entry(other.entry)
{
    if (entry != nullptr && !entry->isKept.load(std::memory_order_relaxed))
    {
        entry->users.fetch_add(1, std::memory_order_relaxed);
    }
}

InternedText::~InternedText()
{
    if (entry == nullptr || entry->isKept.load(std::memory_order_relaxed))
    {
        return;
    }
    uint64 users = entry->users.load(std::memory_order_relaxed);
    while (users > 1)
    {
        if (entry->users.compare_exchange_weak(users, users - 1, std::memory_order_acq_rel, std::memory_order_relaxed))
        {
            return;
        }
    }
    Pool& pool = Pool::Instance();
    Zu::MutexLock const guard(pool.lock);
    if (entry->users.fetch_sub(1, std::memory_order_acq_rel) == 1) // another thread may have found it since the load
    {
        pool.Erase(*entry);
        delete entry;
    }
}

std::string const& InternedText::Get() const noexcept
{
    return TextOf(entry);
}

InternedText InternedText::Attach(void* detached) noexcept
{
    InternedText text;
    text.entry = static_cast<Entry*>(detached);
    return text;
}

std::string const& InternedText::TextOf(void const* detached) noexcept
{
    static auto const* const empty = new std::string;
    return detached != nullptr ? static_cast<Entry const*>(detached)->text : *empty;
}

std::size_t InternedText::PoolSize()
{
    Pool& pool = Pool::Instance();
    Zu::MutexLock const guard(pool.lock);
    return pool.count;
}

} // namespace Zu::Properties::Internal
