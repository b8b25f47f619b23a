#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>

namespace Zu
{

/// Calls a function periodically on its own thread, "AsyncTimer". The first start creates the thread.
///
/// Any thread may start and stop the timer, also the callback. An exception of the callback is logged as "EXCEPTION
/// THROWN: ", with its log entry and back trace, and the timer goes on. If a callback takes longer than the interval,
/// the ticks that it misses are skipped.
class ZUAPI_API AsyncTimer
{
public:
    /// Throws `Zu::Status::BAD_ARGUMENT` for an empty function. The timer does not run until `Start`.
    explicit AsyncTimer(std::function<void(AsyncTimer&)> callback);

    ~AsyncTimer(); ///< stops the timer; the callback may destroy its own timer

    AsyncTimer(AsyncTimer const&) = delete;
    AsyncTimer& operator=(AsyncTimer const&) = delete;

    /// Starts a tick every `intervalUsec` microseconds. The first tick comes after one interval, or at once if `atOnce`
    /// is true. A running timer continues with the new interval. Throws `Zu::Status::BAD_ARGUMENT` for an interval of
    /// 0, and the failing status if the thread cannot be started.
    void Start(uint64 intervalUsec, bool atOnce);

    /// Stops the ticks. After the return no callback begins, and a running callback has ended, unless the callback
    /// itself calls this.
    void Stop();

private:
    struct State; // shared with the thread, which outlives this object if the callback destroys the timer

    static int ThreadFunction(void* argument);
    void StartThread();

    std::shared_ptr<State> const state;

    Zu::Mutex threadLock; // guards the start of the thread; never held together with the lock in `State`
    bool threadStarted ZU_GUARDED_BY(threadLock) = false;
    wThread thread;
};

} // namespace Zu
