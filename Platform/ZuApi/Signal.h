#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <thread>
#include <utility>

namespace Zu
{

namespace Internal
{

/// The handlers of a signal in order of addition, without their types. Any thread may call any operation.
class HandlerList
{
public:
    class Firing;

    /// One handler. `Signal` derives from it.
    class Entry
    {
    protected:
        Entry() = default;
        ~Entry() = default;

    private:
        friend class HandlerList;

        // Guarded by the lock of the list, except that the only owner of an entry may read `list` without it.
        HandlerList* list = nullptr; // null after the removal
        std::list<std::shared_ptr<Entry>>::iterator position;
        CondVar* callEnded = nullptr; // of the removal that waits for running calls; notified at the end of each call
    };

    HandlerList() = default;

    /// A handler may destroy the list that calls it. The caller guarantees that no other thread uses the list.
    ZUAPI_API ~HandlerList();

    HandlerList(HandlerList const&) = delete;
    HandlerList& operator=(HandlerList const&) = delete;

    ZUAPI_API void Add(std::shared_ptr<Entry> const& entry);

    /// Removes `entry` in constant time and waits for its calls on other threads. Does nothing for an entry that is not
    /// in this list.
    ZUAPI_API void Remove(Entry& entry);

    /// Removes an entry from its list, if it is still in a list. Only the entry's owner calls this.
    ZUAPI_API static void RemoveOwned(Entry& entry);

    ZUAPI_API uint64 Count() const;

private:
    using Entries = std::list<std::shared_ptr<Entry>>;

    bool RunsElsewhere(Entry const& entry) const ZU_REQUIRES(lock);

    mutable Mutex lock; // a leaf: no other lock is taken under it
    // While any firing runs, removed entries stay in the list, so that each firing keeps its position.
    Entries entries ZU_GUARDED_BY(lock);
    uint64 count ZU_GUARDED_BY(lock) = 0;          // the entries that are not removed
    Firing* firings ZU_GUARDED_BY(lock) = nullptr; // the running ones, the latest first
};

/// One firing, which steps from handler to handler under the lock of the list. No lock is held between the steps.
class HandlerList::Firing
{
public:
    explicit Firing(HandlerList& firedList) : list(&firedList)
    {
    }

    /// Ends the firing early if a handler has thrown.
    ~Firing()
    {
        if (isRunning && list != nullptr)
        {
            Leave();
        }
    }

    Firing(Firing const&) = delete;
    Firing& operator=(Firing const&) = delete;

    /// Ends the call of the previous entry. Returns the next entry, or null at the end. Skips removed entries, and
    /// entries that were added after the first step.
    ZUAPI_API Entry* Next();

private:
    friend class HandlerList;

    ZUAPI_API void Leave();
    void EndCall() ZU_REQUIRES(list->lock);
    void Unlink() ZU_REQUIRES(list->lock);

    HandlerList* list;         // null after a handler has destroyed it
    bool isRunning = false;    // true while it is among the firings of the list
    Firing* another = nullptr; // of the same list; guarded by its lock
    Entry* current = nullptr;  // the entry that is being called; guarded by the lock
    std::thread::id thread;
    std::list<std::shared_ptr<Entry>>::iterator next;
    std::size_t left = 0; // the entries that are not visited yet
    Entries removed;      // destroyed with this firing, when no lock is held and no call of them runs
};

} // namespace Internal

/// Keeps one handler at a signal. Its destructor removes the handler.
///
/// The removal waits for a call of the handler on another thread, not for a call on its own thread. It must therefore
/// not be done under a lock that the handler takes, and two handlers must not remove each other. After it the handler is
/// not called any more. A subscription may outlive its signal. One thread at a time may use a subscription.
class ZUAPI_API Subscription
{
public:
    /// Keeps no handler.
    Subscription() = default;

    ~Subscription()
    {
        End();
    }

    Subscription(Subscription&& other) noexcept = default;

    /// Removes the handler that this subscription kept until now.
    Subscription& operator=(Subscription&& other) noexcept;

    /// Removes the handler now.
    void End() noexcept;

    /// Returns a function that calls `callback` until this subscription ends, and then does nothing. For interfaces that
    /// take a function and give no subscription. Ends the earlier callback of this subscription. The function may be
    /// copied, and called by any thread at any time; calls on several threads run concurrently. An empty function stays
    /// empty.
    template <typename... Args>
    std::function<void(Args...)> Bind(std::function<void(Args...)> callback);

private:
    template <typename... Args>
    friend class Signal;

    explicit Subscription(std::weak_ptr<Internal::HandlerList::Entry> keptEntry) noexcept : entry(std::move(keptEntry))
    {
    }

    std::weak_ptr<Internal::HandlerList::Entry> entry;
    std::shared_ptr<void> signal; // only of `Bind`, whose functions may be destroyed on another thread meanwhile
};

/// Calls its handlers in order of addition when it fires. Any thread may call any operation.
///
/// Handlers run on the firing thread; if several threads fire, they run concurrently. No lock is held during a call: a
/// handler may fire the signal and may add and remove handlers, itself included. A handler that is removed while the
/// signal fires is not called any more. A handler that is added while the signal fires is called from the next firing
/// on. An exception of a handler leaves `Fire`, and later handlers are not called.
///
/// A handler may destroy the signal that calls it; later handlers are not called then. The caller guarantees that no
/// other thread uses the signal then.
template <typename... Args>
class Signal
{
public:
    using Handler = std::function<void(Args...)>;

    Signal() = default;

    /// Appends `handler`, which stays until the subscription is destroyed. An empty function is not stored.
    [[nodiscard]] Subscription Subscribe(Handler handler)
    {
        return Subscription(Append(std::move(handler)));
    }

    /// Calls the handlers in order of addition on the calling thread. Allocates no memory.
    void Fire(Args... args)
    {
        Internal::HandlerList::Firing firing(handlers);
        while (auto* const entry = firing.Next())
        {
            static_cast<Entry*>(entry)->handler(args...);
        }
    }

    uint64 Count() const
    {
        return handlers.Count();
    }

    bool Empty() const
    {
        return Count() == 0;
    }

protected:
    struct Entry : Internal::HandlerList::Entry
    {
        explicit Entry(Handler newHandler) : handler(std::move(newHandler))
        {
        }

        Handler const handler;
    };

    /// Returns null for an empty function.
    std::shared_ptr<Entry> Append(Handler handler)
    {
        if (!handler)
        {
            return nullptr;
        }
        auto entry = std::make_shared<Entry>(std::move(handler));
        handlers.Add(entry);
        return entry;
    }

    Internal::HandlerList handlers;
};

template <typename... Args>
std::function<void(Args...)> Subscription::Bind(std::function<void(Args...)> callback)
{
    End();
    if (!callback)
    {
        return {};
    }
    auto const bound = std::make_shared<Signal<Args...>>();
    *this = bound->Subscribe(std::move(callback));
    signal = bound;
    return [bound](Args... args) { bound->Fire(args...); };
}

} // namespace Zu
