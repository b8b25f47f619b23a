#pragma once

#include "wApi/wTypes.h"

#include <functional>
#include <list>
#include <memory>
#include <utility>

namespace Zu
{

/// An ordered list of handlers that are called when the event fires.
///
/// It has no lock, by design: handlers are added and removed where no other thread can be firing. On the firing thread a
/// handler may add and remove handlers, itself included: one that is removed is not called any more, one that is added is
/// called from the next firing on. An exception of a handler leaves `Fire`, and later handlers are not called.
template <typename... Args>
class Event
{
    struct Slot;

public:
    using Handler = std::function<void(Args...)>;

    /// Names one handler. It refers to it weakly: an id that is stale, or of another event, does nothing.
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
        auto slot = std::make_shared<Slot>();
        slot->handler = std::move(handler);
        slot->owner = this;
        slot->position = slots.insert(slots.end(), slot);
        ++count;
        return {slot, true};
    }

    /// Removes a handler in constant time; does nothing for an id that is not valid or no longer names a handler.
    void Remove(CallbackId const& id)
    {
        auto const slot = id.second ? id.first.lock() : nullptr;
        if (slot == nullptr || slot->owner != this)
        {
            return;
        }
        slot->owner = nullptr;
        --count;
        if (firing == 0)
        {
            slots.erase(slot->position);
        }
    }

    /// Calls the handlers in order of addition on this thread.
    void Fire(Args... args)
    {
        if (slots.empty())
        {
            return;
        }
        FiringScope const scope(*this);
        auto const last = std::prev(slots.end());
        for (auto position = slots.begin();; ++position)
        {
            if (std::shared_ptr<Slot> const slot = *position; slot->owner == this)
            {
                slot->handler(args...);
            }
            if (position == last)
            {
                break;
            }
        }
    }

    uint64 Count() const
    {
        return count;
    }

    bool Empty() const
    {
        return count == 0;
    }

private:
    struct Slot
    {
        Handler handler;
        Event const* owner = nullptr; // null once removed
        typename std::list<std::shared_ptr<Slot>>::iterator position;
    };

    /// Keeps removed slots in the list while it is walked and frees them when the outermost walk has ended.
    struct FiringScope
    {
        explicit FiringScope(Event& firedEvent) : event(firedEvent)
        {
            ++event.firing;
        }

        ~FiringScope()
        {
            if (--event.firing == 0)
            {
                event.slots.remove_if([](auto const& slot) { return slot->owner == nullptr; });
            }
        }

        FiringScope(FiringScope const&) = delete;
        FiringScope& operator=(FiringScope const&) = delete;

        Event& event;
    };

    std::list<std::shared_ptr<Slot>> slots;
    uint64 count = 0;
    uint32 firing = 0; // nested walks
};

} // namespace Zu
