#pragma once

#include "ZuApi/Event.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

namespace ZuScan
{

/// How an alignment ended.
enum class AlignCompletionStatus : int32
{
    SUCCESS = 0,
    FAILED = 1,
    CANCELLED = 2
};

} // namespace ZuScan

namespace Zu
{

/// The event that tells the end of an alignment has a lock, unlike all others, for three threads meet at it: the scanner's,
/// which fires, that of whoever starts alignments, which adds, and a third that removes.
///
/// A removal waits for handlers that run on another thread; so it must not be made under a lock that a handler takes, and
/// handlers ought to be short. A handler may add and remove, itself included. Otherwise it is as any other event.
template <>
class Event<ZuScan::AlignCompletionStatus>
{
    using Unlocked = Event<ZuScan::AlignCompletionStatus, std::nullptr_t>;

public:
    using Handler = std::function<void(ZuScan::AlignCompletionStatus)>;
    using CallbackId = Unlocked::CallbackId;

    Event() = default;
    ~Event() = default;
    Event(Event const&) = delete;
    Event& operator=(Event const&) = delete;

    CallbackId Add(Handler handler)
    {
        if (!handler)
        {
            return {};
        }
        Zu::MutexLock const guard(lock);
        return handlers.Add(
            [inner = std::move(handler)](ZuScan::AlignCompletionStatus status, std::nullptr_t) { inner(status); });
    }

    void Remove(CallbackId const& id)
    {
        Zu::MutexLock const guard(lock);
        handlers.Remove(id);
    }

    void Fire(ZuScan::AlignCompletionStatus status)
    {
        Zu::MutexLock const guard(lock);
        handlers.Fire(status, nullptr);
    }

    uint64 Count() const
    {
        Zu::MutexLock const guard(lock);
        return handlers.Count();
    }

    bool Empty() const
    {
        return Count() == 0;
    }

private:
    mutable Zu::RecursiveMutex lock;       // held while handlers run
    Unlocked handlers ZU_GUARDED_BY(lock); // the same without a lock; the second argument only makes it another type
};

} // namespace Zu
