#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace ZuTest
{

/// What was called, in order, from all threads. Several fakes may share one, so that a test sees their common order.
class CallLog
{
public:
    using Calls = std::vector<std::string>;

    /// Far beyond what any wait of a test takes, sanitizers included.
    static constexpr std::chrono::seconds BOUND{30};

    void Add(std::string call)
    {
        {
            std::scoped_lock const guard(lock);
            calls.push_back(std::move(call));
        }
        changed.notify_all();
    }

    Calls All() const
    {
        std::scoped_lock const guard(lock);
        return calls;
    }

    std::size_t Count(std::string const& call) const
    {
        std::scoped_lock const guard(lock);
        return CountLocked(call);
    }

    /// Waits until `call` was made so many times; false when that takes too long.
    bool WaitFor(std::string const& call, std::size_t count = 1) const
    {
        std::unique_lock guard(lock);
        return changed.wait_for(guard, BOUND, [&] { return CountLocked(call) >= count; });
    }

    void Clear()
    {
        std::scoped_lock const guard(lock);
        calls.clear();
    }

private:
    std::size_t CountLocked(std::string const& call) const
    {
        return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), call));
    }

    mutable std::mutex lock;
    mutable std::condition_variable changed;
    Calls calls;
};

} // namespace ZuTest
