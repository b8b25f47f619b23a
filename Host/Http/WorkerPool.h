#pragma once

#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <array>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace ZuHost
{

/// Threads that run what is given to them, in the order in which it was given, several pieces at once.
class WorkerPool final
{
public:
    static constexpr uint64 THREADS = 4;

    WorkerPool();
    ~WorkerPool(); ///< runs what was given, then ends the threads

    WorkerPool(WorkerPool const&) = delete;
    WorkerPool& operator=(WorkerPool const&) = delete;

    /// Any thread may call. What `work` throws is logged.
    void Run(std::function<void()> work);

private:
    static int Main(void* argument);
    std::function<void()> Next();

    std::mutex lock; // a leaf: guards the two below
    std::condition_variable changed;
    std::deque<std::function<void()>> waiting;
    bool isEnding = false;

    std::array<wThread, THREADS> threads; // last: they use all of the above
};

} // namespace ZuHost
