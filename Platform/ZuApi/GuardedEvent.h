#pragma once

#include "ZuApi/Event.h"
#include "wApi/wMutex.h"

#include <vector>

namespace Zu
{

/// An Event that any thread may change while another one fires it.
///
/// Its lock is a leaf, held while the list is changed or the handlers are collected, and never during a call: firing threads
/// do not wait for each other. A handler that is removed while the event fires is not called any more, but a removal does
/// not wait for a call that has begun: who needs that binds the handler behind a gate. One that is added is called from the
/// next firing on. An exception of a handler leaves `Fire`, and later handlers are not called.
template <typename... Args>
class GuardedEvent
{
public:
    using Handler = typename Event<Args...>::Handler;
    using CallbackId = typename Event<Args...>::CallbackId;

    GuardedEvent() = default;
    ~GuardedEvent() = default;
    GuardedEvent(GuardedEvent const&) = delete;
    GuardedEvent& operator=(GuardedEvent const&) = delete;

    /// Adds `handler` behind those already there. An empty function is not stored and gives an id that is not valid.
    CallbackId Add(Handler handler)
    {
        if (!handler)
        {
            return {};
        }
        auto shared = std::make_shared<Handler>(std::move(handler));
        Zu::MutexLock const guard(lock);
        return event.Add([this, shared = std::move(shared)](Args...)
                             ZU_REQUIRES(lock) { collected->push_back(shared); });
    }

    /// Does nothing for an id that is not valid or no longer names a handler.
    void Remove(CallbackId const& id)
    {
        auto const ending = id.first.lock(); // what the handler holds ends behind the lock: it may come back here
        Zu::MutexLock const guard(lock);
        event.Remove(id);
    }

    /// Calls the handlers in order of addition on this thread.
    void Fire(Args... args)
    {
        for (std::weak_ptr<Handler> const& weak : Collect(args...))
        {
            if (auto const handler = weak.lock())
            {
                (*handler)(args...);
            }
        }
    }

    uint64 Count() const
    {
        Zu::MutexLock const guard(lock);
        return event.Count();
    }

    bool Empty() const
    {
        return Count() == 0;
    }

private:
    using Collected = std::vector<std::weak_ptr<Handler>>;

    Collected Collect(Args... args)
    {
        Collected handlers;
        Zu::MutexLock const guard(lock);
        handlers.reserve(event.Count());
        collected = &handlers;
        event.Fire(args...); // calls no handler: each only says who it is
        return handlers;
    }

    mutable Zu::Mutex lock;
    Event<Args...> event ZU_GUARDED_BY(lock);
    Collected* collected ZU_GUARDED_BY(lock) = nullptr; // of the firing that holds the lock
};

} // namespace Zu
