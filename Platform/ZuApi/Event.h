#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <utility>

namespace Zu
{

/// An ordered list of handlers that are called when the event fires. Any thread may call any operation.
///
/// Handlers run on the firing thread; if several threads fire, they run concurrently. No lock is held during a call: a
/// handler may fire the event and may add and remove handlers, itself included. A handler that is removed while the
/// event fires is not called any more. `Remove` does not wait for a call that has begun; `CallbackGate` does. A handler
/// that is added while the event fires is called from the next firing on. An exception of a handler leaves `Fire`, and
/// later handlers are not called.
template <typename... Args>
class Event
{
    struct Slot;
    class Walk;

public:
    using Handler = std::function<void(Args...)>;

    /// Identifies one handler without owning it. A stale id, or an id of another event, identifies no handler.
    struct CallbackId
    {
        std::weak_ptr<Slot> first; ///< the handler's entry in the list
        bool second = false;       ///< false if no handler was added
    };

    Event() = default;

    /// A handler may destroy the event that calls it; later handlers are not called then. The caller guarantees that no
    /// other thread fires the event.
    ~Event()
    {
        for (Walk* walk = walks; walk != nullptr; walk = walk->another)
        {
            walk->event = nullptr;
        }
    }

    Event(Event const&) = delete;
    Event& operator=(Event const&) = delete;

    /// Appends `handler`. An empty function is not stored; the returned id is then not valid.
    CallbackId Add(Handler handler)
    {
        if (!handler)
        {
            return {};
        }
        auto slot = std::make_shared<Slot>(std::move(handler));
        MutexLock const guard(lock);
        slot->owner = this;
        slot->position = slots.insert(slots.end(), slot);
        ++count;
        return {slot, true};
    }

    /// Removes a handler in constant time. Does nothing for an id that is not valid or identifies no handler.
    void Remove(CallbackId const& id)
    {
        auto const slot = id.second ? id.first.lock() : nullptr;
        // Destroyed after the lock is released: a handler's captures may call this event.
        Slots ended;
        MutexLock const guard(lock);
        if (slot == nullptr || slot->owner != this)
        {
            return;
        }
        slot->owner = nullptr;
        --count;
        if (walks == nullptr)
        {
            ended.splice(ended.end(), slots, slot->position);
        }
    }

    /// Calls the handlers in order of addition on the calling thread. Allocates no memory.
    void Fire(Args... args)
    {
        Walk walk(*this);
        while (std::shared_ptr<Slot> const slot = walk.Next())
        {
            slot->handler(args...);
        }
    }

    uint64 Count() const
    {
        MutexLock const guard(lock);
        return count;
    }

    bool Empty() const
    {
        return Count() == 0;
    }

private:
    using Slots = std::list<std::shared_ptr<Slot>>;

    struct Slot
    {
        explicit Slot(Handler newHandler) : handler(std::move(newHandler))
        {
        }

        Handler const handler;
        Event const* owner = nullptr; // guarded by the event's lock; null after the removal
        typename Slots::iterator position;
    };

    /// One firing, which steps from handler to handler under the lock. While any walk runs, removed slots stay in the
    /// list, so that each walk keeps its position.
    class Walk
    {
    public:
        explicit Walk(Event& firedEvent) : event(&firedEvent)
        {
            MutexLock const guard(event->lock);
            next = event->slots.begin();
            left = event->slots.size();
            another = std::exchange(event->walks, this);
        }

        ~Walk()
        {
            if (event == nullptr)
            {
                return;
            }
            Slots ended; // destroyed after the lock is released, as in `Remove`
            MutexLock const guard(event->lock);
            Walk** link = &event->walks;
            while (*link != this)
            {
                link = &(*link)->another;
            }
            *link = another;
            if (event->walks == nullptr)
            {
                event->TakeRemoved(ended);
            }
        }

        Walk(Walk const&) = delete;
        Walk& operator=(Walk const&) = delete;

        /// Returns the next handler that is not removed, or null at the end. Skips slots that were added after the walk
        /// began.
        std::shared_ptr<Slot> Next()
        {
            if (event == nullptr)
            {
                return nullptr;
            }
            MutexLock const guard(event->lock);
            for (; left != 0; --left, ++next)
            {
                if ((*next)->owner != nullptr)
                {
                    --left;
                    return *next++;
                }
            }
            return nullptr;
        }

    private:
        friend class Event;

        Event* event;            // null after a handler has destroyed it
        Walk* another = nullptr; // of the same event; guarded by its lock
        typename Slots::iterator next;
        std::size_t left = 0; // the slots that are not visited yet
    };

    void TakeRemoved(Slots& removed) ZU_REQUIRES(lock)
    {
        if (count == slots.size())
        {
            return;
        }
        for (auto slot = slots.begin(); slot != slots.end();)
        {
            auto const present = slot++;
            if ((*present)->owner == nullptr)
            {
                removed.splice(removed.end(), slots, present);
            }
        }
    }

    mutable Mutex lock; // a leaf: no other lock is taken under it
    Slots slots ZU_GUARDED_BY(lock);
    uint64 count ZU_GUARDED_BY(lock) = 0;      // the handlers that are not removed
    Walk* walks ZU_GUARDED_BY(lock) = nullptr; // the running ones
};

} // namespace Zu
