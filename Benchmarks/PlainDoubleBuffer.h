#pragma once

#include "wApi/wTypes.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace ZuBench
{

/// The minimum of code that passes items to another thread every 2,000 microseconds: two vectors, a mutex, a thread.
template <typename T>
class PlainDoubleBuffer final
{
public:
    using Handler = std::function<void(std::vector<T>&)>;

    explicit PlainDoubleBuffer(Handler newHandler) : handler(std::move(newHandler)), thread([this] { Run(); })
    {
    }

    ~PlainDoubleBuffer()
    {
        isRunning = false;
        thread.join();
    }

    PlainDoubleBuffer(PlainDoubleBuffer const&) = delete;
    PlainDoubleBuffer& operator=(PlainDoubleBuffer const&) = delete;

    void Add(T item)
    {
        std::scoped_lock const guard(lock);
        filled.push_back(std::move(item));
    }

private:
    void Run()
    {
        std::vector<T> handed;
        while (isRunning)
        {
            if (!handed.empty())
            {
                handler(handed);
                handed.clear();
            }
            {
                std::scoped_lock const guard(lock);
                handed.swap(filled);
            }
            std::this_thread::sleep_for(std::chrono::microseconds(2000));
        }
    }

    Handler const handler;
    std::mutex lock; // guards the vector
    std::vector<T> filled;
    std::atomic<bool> isRunning{true};
    std::thread thread; // last: it uses the others
};

} // namespace ZuBench
