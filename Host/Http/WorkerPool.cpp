#include "Host/Http/WorkerPool.h"

#include "ZuApi/Guard.h"

#include <string>
#include <utility>

namespace ZuHost
{

WorkerPool::WorkerPool()
{
    for (uint64 i = 0; i < THREADS; ++i)
    {
        ZU_CHECK(wThread_Construct(&threads[i]));
        ZU_CHECK(wThread_SetName(threads[i], ("Http.Worker" + std::to_string(i)).c_str()));
        ZU_CHECK(wThread_Start(threads[i], &WorkerPool::Main, this));
    }
}

WorkerPool::~WorkerPool()
{
    {
        std::scoped_lock const guard(lock);
        isEnding = true;
    }
    changed.notify_all();
    for (wThread& thread : threads)
    {
        ZU_GUARD_DESTRUCTOR([&thread] { ZU_CHECK(wThread_Join(thread, wTIMEOUT_INFINITE, nullptr)); });
    }
}

void WorkerPool::Run(std::function<void()> work)
{
    {
        std::scoped_lock const guard(lock);
        waiting.push_back(std::move(work));
    }
    changed.notify_one();
}

int WorkerPool::Main(void* argument)
{
    auto& pool = *static_cast<WorkerPool*>(argument);
    while (auto const work = pool.Next())
    {
        ZU_GUARD_BOUNDARY(work);
    }
    return 1;
}

/// Empty at the end.
std::function<void()> WorkerPool::Next()
{
    std::unique_lock guard(lock);
    changed.wait(guard, [this] { return isEnding || !waiting.empty(); });
    if (waiting.empty())
    {
        return {};
    }
    std::function<void()> work = std::move(waiting.front());
    waiting.pop_front();
    return work;
}

} // namespace ZuHost
