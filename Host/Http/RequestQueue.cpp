#include "Host/Http/RequestQueue.h"

#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"

#include <boost/asio/post.hpp>

namespace ZuHost
{

RequestQueue::RequestQueue(boost::asio::io_context& usedContext, uint64 newLimit)
    : context(usedContext), limit(newLimit)
{
}

RequestQueue::~RequestQueue() = default;

void RequestQueue::Run(std::function<void()> work)
{
    Zu::MutexLock const guard(mutex);
    waiting.push_back(std::move(work));
    if (serving == limit)
    {
        return; // a serving thread takes the work after its present work
    }
    try
    {
        boost::asio::post(context, [this] { Serve(); }); // no deferring: the caller may be about to block
    }
    catch (...)
    {
        waiting.pop_back();
        throw;
    }
    ++serving;
}

void RequestQueue::Serve()
{
    std::function<void()> work;
    while (TakeNext(work))
    {
        ZU_GUARD_BOUNDARY(work);
        work = nullptr; // releases what the work holds before the thread waits or goes on
    }
}

/// Returns false if no work waits; the thread then stops serving.
bool RequestQueue::TakeNext(std::function<void()>& work)
{
    Zu::MutexLock const guard(mutex);
    if (waiting.empty())
    {
        --serving;
        return false;
    }
    work = std::move(waiting.front());
    waiting.pop_front();
    return true;
}

} // namespace ZuHost
