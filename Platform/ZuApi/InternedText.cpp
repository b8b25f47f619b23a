#include "ZuApi/InternedText.h"

#include "wApi/wTypes.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Zu::Properties::Internal
{

struct InternedText::Entry
{
    Entry(std::string_view newText, std::size_t newHash) : text(newText), hash(newHash)
    {
    }

    std::string const text;
    std::size_t const hash;
    std::atomic<uint64> users{1}; // goes to 0, and up again from nothing, under the lock of the pool only
};

/// The texts in a flat table with open addressing: every record that is made looks up all its keys and titles.
struct InternedText::Pool
{
    static std::size_t HashOf(std::string_view text) noexcept
    {
        return std::hash<std::string_view>()(text);
    }

    /// The entry of this text with one more user; null for the empty text.
    Entry* Take(std::string_view text, std::size_t hash)
    {
        if (text.empty())
        {
            return nullptr;
        }
        if (Entry* const found = slots[SlotOf(text, hash)]; found != nullptr)
        {
            found->users.fetch_add(1, std::memory_order_relaxed);
            return found;
        }
        auto made = std::make_unique<Entry>(text, hash);
        slots[RoomFor(text, hash)] = made.get();
        ++count;
        return made.release();
    }

    /// The slot of the entry with this text, else the free one where it belongs.
    std::size_t SlotOf(std::string_view text, std::size_t hash) const
    {
        std::size_t slot = hash & (slots.size() - 1);
        while (slots[slot] != nullptr && (slots[slot]->hash != hash || slots[slot]->text != text))
        {
            slot = Next(slot);
        }
        return slot;
    }

    std::size_t Next(std::size_t slot) const
    {
        return (slot + 1) & (slots.size() - 1);
    }

    /// A free slot for a text that is not there, when at most half of them are taken.
    std::size_t RoomFor(std::string_view text, std::size_t hash)
    {
        if (2 * (count + 1) > slots.size())
        {
            std::vector<Entry*> const old = std::exchange(slots, std::vector<Entry*>(2 * slots.size()));
            for (Entry* const entry : old)
            {
                if (entry != nullptr)
                {
                    slots[SlotOf(entry->text, entry->hash)] = entry;
                }
            }
        }
        return SlotOf(text, hash);
    }

    /// Entries behind the gap move up that are looked for from there or from ahead of it.
    void Erase(Entry const& entry)
    {
        std::size_t gap = SlotOf(entry.text, entry.hash);
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

    std::mutex lock;                                       // a leaf: guards the table alone
    std::vector<Entry*> slots = std::vector<Entry*>(1024); // a power of two of them; half of them stay free
    std::size_t count = 0;

    static Pool& Instance()
    {
        static auto* const pool = new Pool; // never freed: texts of static storage may outlive any static
        return *pool;
    }
};

InternedText::InternedText(std::string_view text)
{
    std::size_t const hash = Pool::HashOf(text);
    Pool& pool = Pool::Instance();
    std::scoped_lock const guard(pool.lock);
    entry = pool.Take(text, hash);
}

InternedText::InternedText(InternedText const& other) noexcept : entry(other.entry)
{
    if (entry != nullptr)
    {
        entry->users.fetch_add(1, std::memory_order_relaxed);
    }
}

InternedText::~InternedText()
{
    if (entry == nullptr)
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
    std::scoped_lock const guard(pool.lock);
    if (entry->users.fetch_sub(1, std::memory_order_acq_rel) == 1) // somebody may have found it since the load
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
    std::scoped_lock const guard(pool.lock);
    return pool.count;
}

} // namespace Zu::Properties::Internal
