#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>

namespace Zu
{

/// Calls a function again and again on a thread of its own, named "AsyncTimer", which is there from the first start on.
///
/// Any thread may start and stop it, the callback too. What the callback throws is logged as "EXCEPTION THROWN: ", with log
/// entry and back trace, and the timer goes on. A callback that takes longer than the interval loses ticks; they are not
/// made up for.
class ZUAPI_API AsyncTimer
{
public:
    /// Throws -997 for an empty function. The timer stands still until it is started.
    explicit AsyncTimer(std::function<void(AsyncTimer&)> callback);

    ~AsyncTimer(); ///< stops; may be called from the callback

    AsyncTimer(AsyncTimer const&) = delete;
    AsyncTimer& operator=(AsyncTimer const&) = delete;

    /// From now on a tick every `intervalUsec` microseconds, the first one after an interval, or at once when `atOnce` is
    /// true. A timer that runs goes on with the new interval. Throws -997 for an interval of 0.
    void Start(uint64 intervalUsec, bool atOnce);

    /// No callback begins after it has returned, and a running one has ended, unless this is called from it.
    void Stop();

private:
    struct State; // shared with the thread, which may outlive this object when the callback ends it

    static int ThreadFunction(void* argument);
    void StartThread();

    std::shared_ptr<State> const state;

    Zu::Mutex threadLock; // taken before the state's lock
    bool threadStarted ZU_GUARDED_BY(threadLock) = false;
    wThread thread;
};

} // namespace Zu
