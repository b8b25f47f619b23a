#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace ZuTest
{

/// The calls of all threads, in order. Several fakes may share one log, so that a test sees their common order.
class CallLog
{
public:
    using Calls = std::vector<std::string>;

    /// Much longer than any wait of a test, sanitizers included.
    static constexpr std::chrono::seconds BOUND{30};

    void Add(std::string call)
    {
        {
            Zu::MutexLock const guard(lock);
            calls.push_back(std::move(call));
        }
        changed.NotifyAll();
    }

    Calls All() const
    {
        Zu::MutexLock const guard(lock);
        return calls;
    }

    std::size_t Count(std::string const& call) const
    {
        Zu::MutexLock const guard(lock);
        return CountLocked(call);
    }

    /// Waits until `call` was made so many times; false when that takes too long.
    bool WaitFor(std::string const& call, std::size_t count = 1) const
    {
        Zu::MutexLock const guard(lock);
        return changed.WaitUntil(lock, wTime_AfterUsec(static_cast<uint64>(std::chrono::microseconds(BOUND).count())),
                                 [&]() ZU_REQUIRES(lock) { return CountLocked(call) >= count; });
    }

    void Clear()
    {
        Zu::MutexLock const guard(lock);
        calls.clear();
    }

private:
    std::size_t CountLocked(std::string const& call) const ZU_REQUIRES(lock)
    {
        return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), call));
    }

    mutable Zu::Mutex lock;
    mutable Zu::CondVar changed;
    Calls calls ZU_GUARDED_BY(lock);
};

} // namespace ZuTest
