#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <utility>
#include <vector>

namespace Zu
{

/// An ordered list of handlers that are called when the event fires. Any thread may call any operation.
///
/// Handlers run on the firing thread, and no lock is held during a call, so that a handler may fire, add and remove, itself
/// included. A handler that is removed while the event fires is not called any more; `Remove` does not wait for a call that
/// has begun, for which `CallbackGate` is there. A handler that is added while the event fires is called from the next firing
/// on. An exception of a handler leaves `Fire`, and later handlers are not called.
template <typename... Args>
class Event
{
    struct Slot;

public:
    using Handler = std::function<void(Args...)>;

    /// Names one handler. The id does not own it: an id that is stale, or of another event, names nothing.
    struct CallbackId
    {
        std::weak_ptr<Slot> first; ///< position in the list
        bool second = false;       ///< false for an id that was never given to a handler
    };

    Event() = default;
    ~Event() = default;
    Event(Event const&) = delete;
    Event& operator=(Event const&) = delete;

    /// Adds `handler` behind those already there. An empty function is not stored and gives an id that is not valid.
    CallbackId Add(Handler handler)
    {
        if (!handler)
        {
            return {};
        }
        auto slot = std::make_shared<Slot>(std::move(handler), this);
        MutexLock const guard(lock);
        slot->position = slots.insert(slots.end(), slot);
        snapshot = nullptr;
        return {slot, true};
    }

    /// Removes a handler in constant time; does nothing for an id that is not valid or no longer names a handler.
    void Remove(CallbackId const& id)
    {
        auto const slot = id.second ? id.first.lock() : nullptr;
        std::shared_ptr<Slots const> outdated; // both end behind the lock: what a handler holds may come back here
        MutexLock const guard(lock);
        if (slot == nullptr || slot->owner.load(std::memory_order_relaxed) != this)
        {
            return;
        }
        slot->owner.store(nullptr, std::memory_order_relaxed);
        slots.erase(slot->position);
        outdated = std::exchange(snapshot, nullptr);
    }

    /// Calls the handlers in order of addition on this thread.
    void Fire(Args... args)
    {
        std::shared_ptr<Slots const> const present = Snapshot();
        if (present == nullptr)
        {
            return;
        }
        for (auto const& slot : *present)
        {
            if (slot->owner.load(std::memory_order_relaxed) == this)
            {
                slot->handler(args...);
            }
        }
    }

    uint64 Count() const
    {
        MutexLock const guard(lock);
        return slots.size();
    }

    bool Empty() const
    {
        return Count() == 0;
    }

private:
    using Slots = std::vector<std::shared_ptr<Slot>>;

    struct Slot
    {
        Slot(Handler newHandler, Event const* newOwner) : handler(std::move(newHandler)), owner(newOwner)
        {
        }

        Handler const handler;
        std::atomic<Event const*> owner; // null once removed; publishes nothing
        typename std::list<std::shared_ptr<Slot>>::iterator position;
    };

    /// The handlers at this moment; null when there are none. Allocates only for the first firing after a change.
    std::shared_ptr<Slots const> Snapshot()
    {
        MutexLock const guard(lock);
        if (snapshot == nullptr && !slots.empty())
        {
            snapshot = std::make_shared<Slots const>(slots.begin(), slots.end());
        }
        return snapshot;
    }

    mutable Mutex lock; // a leaf
    std::list<std::shared_ptr<Slot>> slots ZU_GUARDED_BY(lock);
    std::shared_ptr<Slots const> snapshot ZU_GUARDED_BY(lock); // null while it does not match the list
};

} // namespace Zu
