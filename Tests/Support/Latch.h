#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace ZuTest
{

/// Opens once; threads wait for it with a bound.
class Latch
{
public:
    void Open()
    {
        {
            std::scoped_lock const guard(lock);
            open = true;
        }
        changed.notify_all();
    }

    /// False when it did not open in time.
    bool Wait() const
    {
        std::unique_lock guard(lock);
        return changed.wait_for(guard, std::chrono::seconds(30), [this] { return open; });
    }

private:
    mutable std::mutex lock;
    mutable std::condition_variable changed;
    bool open = false;
};

} // namespace ZuTest
