#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <utility> // before Asio's headers, which use it without including it

#include <boost/asio/io_context.hpp>

#include <deque>
#include <functional>

namespace ZuHost
{

/// Runs requests on the threads of an I/O context, a limited number at a time, so that the other threads stay free for
/// I/O.
///
/// Work beyond the limit waits in the order of arrival and holds no thread. All operations are thread-safe.
/// Ownership: the context outlives the queue. All queued work has run before the queue is destroyed.
class RequestQueue final
{
public:
    RequestQueue(boost::asio::io_context& usedContext, uint64 newLimit);
    ~RequestQueue();

    RequestQueue(RequestQueue const&) = delete;
    RequestQueue& operator=(RequestQueue const&) = delete;

    /// Runs `work` soon on a thread of the context, never within this call. An exception of `work` is logged.
    /// Throws `std::bad_alloc`; `work` does not run then.
    void Run(std::function<void()> work);

private:
    void Serve();
    bool TakeNext(std::function<void()>& work);

    boost::asio::io_context& context;
    uint64 const limit;

    Zu::Mutex mutex; // a leaf: no other lock is taken under it
    std::deque<std::function<void()>> waiting ZU_GUARDED_BY(mutex);
    uint64 serving ZU_GUARDED_BY(mutex) = 0; // threads that run work, or are about to
};

} // namespace ZuHost
