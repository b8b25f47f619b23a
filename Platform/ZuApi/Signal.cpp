#include "ZuApi/Signal.h"

namespace Zu
{

namespace Internal
{

HandlerList::~HandlerList()
{
    // The handlers that are running belong to the outermost firing from now on.
    Firing* outermost = nullptr;
    for (Firing* firing = firings; firing != nullptr; firing = firing->another)
    {
        firing->list = nullptr;
        outermost = firing;
    }
    if (outermost != nullptr)
    {
        for (auto const& entry : entries)
        {
            entry->list = nullptr;
        }
        outermost->removed.swap(entries);
    }
}

void HandlerList::Add(std::shared_ptr<Entry> const& entry)
{
    MutexLock const guard(lock);
    entry->position = entries.insert(entries.end(), entry);
    entry->list = this;
    ++count;
}

void HandlerList::Remove(Entry& entry)
{
    // Destroyed after the lock is released: a handler's captures may call this list.
    Entries removed;
    MutexLock const guard(lock);
    if (entry.list != this)
    {
        return;
    }
    entry.list = nullptr;
    --count;
    if (firings == nullptr)
    {
        removed.splice(removed.end(), entries, entry.position);
        return;
    }
    CondVar callEnded;
    entry.callEnded = &callEnded;
    callEnded.Wait(lock, [&]() ZU_REQUIRES(lock) { return !RunsElsewhere(entry); });
    entry.callEnded = nullptr;
}

void HandlerList::RemoveOwned(Entry& entry)
{
    if (entry.list != nullptr)
    {
        entry.list->Remove(entry);
    }
}

uint64 HandlerList::Count() const
{
    MutexLock const guard(lock);
    return count;
}

bool HandlerList::RunsElsewhere(Entry const& entry) const
{
    auto const own = std::this_thread::get_id();
    for (Firing const* firing = firings; firing != nullptr; firing = firing->another)
    {
        if (firing->current == &entry && firing->thread != own)
        {
            return true;
        }
    }
    return false;
}

HandlerList::Entry* HandlerList::Firing::Next()
{
    if (list == nullptr)
    {
        return nullptr;
    }
    MutexLock const guard(list->lock);
    if (isRunning)
    {
        EndCall();
    }
    else
    {
        isRunning = true;
        thread = std::this_thread::get_id();
        next = list->entries.begin();
        left = list->entries.size();
        another = std::exchange(list->firings, this);
    }
    while (left != 0)
    {
        Entry* const entry = (next++)->get();
        --left;
        if (entry->list != nullptr)
        {
            return current = entry;
        }
    }
    Unlink();
    return nullptr;
}

void HandlerList::Firing::Leave()
{
    MutexLock const guard(list->lock);
    EndCall();
    Unlink();
}

void HandlerList::Firing::EndCall()
{
    if (current->callEnded != nullptr)
    {
        current->callEnded->NotifyAll();
    }
    current = nullptr;
}

/// Takes this firing out of the list. The last one takes the removed entries out as well.
void HandlerList::Firing::Unlink()
{
    isRunning = false;
    Firing** link = &list->firings;
    while (*link != this)
    {
        link = &(*link)->another;
    }
    *link = another;
    if (list->firings != nullptr || list->count == list->entries.size())
    {
        return;
    }
    for (auto entry = list->entries.begin(); entry != list->entries.end();)
    {
        auto const present = entry++;
        if ((*present)->list == nullptr)
        {
            removed.splice(removed.end(), list->entries, present);
        }
    }
}

} // namespace Internal

Subscription& Subscription::operator=(Subscription&& other) noexcept
{
    if (this != &other)
    {
        End();
        entry = std::move(other.entry);
        signal = std::move(other.signal);
    }
    return *this;
}

void Subscription::End() noexcept
{
    if (auto const kept = std::exchange(entry, {}).lock())
    {
        Internal::HandlerList::RemoveOwned(*kept);
    }
    signal.reset();
}

} // namespace Zu
