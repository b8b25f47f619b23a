#include "ZuApi/InternedText.h"

#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace Zu::Properties::Internal
{

struct InternedText::Entry
{
    explicit Entry(std::string_view newText) : text(newText)
    {
    }

    std::string const text;
    std::atomic<uint64> users{1}; // goes to 0, and up again from nothing, under the lock of the pool only
};

struct InternedText::Pool
{
    std::mutex lock; // a leaf: guards the table alone
    std::unordered_map<std::string_view, Entry*> entries;

    static Pool& Instance()
    {
        static auto* const pool = new Pool; // never freed: texts of static storage may outlive any static
        return *pool;
    }
};

InternedText::InternedText(std::string_view text)
{
    if (text.empty())
    {
        return;
    }
    Pool& pool = Pool::Instance();
    std::scoped_lock const guard(pool.lock);
    if (auto const found = pool.entries.find(text); found != pool.entries.end())
    {
        entry = found->second;
        entry->users.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    auto made = std::make_unique<Entry>(text);
    pool.entries.emplace(made->text, made.get());
    entry = made.release();
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
        pool.entries.erase(entry->text);
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
    return pool.entries.size();
}

} // namespace Zu::Properties::Internal
