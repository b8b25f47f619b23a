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
        return; // a serving thread takes the work when it has ended its present one
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

/// False when nothing waits; the thread does not serve any more then.
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
