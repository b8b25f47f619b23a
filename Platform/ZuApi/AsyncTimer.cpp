#include "ZuApi/AsyncTimer.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <utility>

namespace Zu
{

namespace
{

/// The state of the timer that owns the calling thread, else null. Only compared.
thread_local void const* thisTimer = nullptr;

} // namespace

struct AsyncTimer::State
{
    void Start(uint64 newIntervalUsec, bool atOnce);
    void Stop();
    void End();
    void Work();
    void Tick() ZU_REQUIRES(lock);
    void PlanNext() ZU_REQUIRES(lock);

    std::function<void(AsyncTimer&)> callback; // never changes
    AsyncTimer* timer = nullptr;               // passed to the callback, not dereferenced here

    Zu::Mutex lock; // the callback does not run under it
    Zu::CondVar changed;
    bool running ZU_GUARDED_BY(lock) = false;
    bool ending ZU_GUARDED_BY(lock) = false;
    uint64 intervalUsec ZU_GUARDED_BY(lock) = 0;
    uint64 nextUsec ZU_GUARDED_BY(lock) = 0; // moment of the next tick, of `wTime_NowUsec`
    // Counts starts and stops. A tick that sees a new revision does not plan the next one.
    uint64 revision ZU_GUARDED_BY(lock) = 0;
    uint64 callsBegun ZU_GUARDED_BY(lock) = 0;
    uint64 callsEnded ZU_GUARDED_BY(lock) = 0;
};

void AsyncTimer::State::Start(uint64 newIntervalUsec, bool atOnce)
{
    Zu::MutexLock const guard(lock);
    running = !ending;
    intervalUsec = newIntervalUsec;
    nextUsec = wTime_AfterUsec(atOnce ? 0 : intervalUsec);
    ++revision;
    changed.NotifyAll();
}

void AsyncTimer::State::Stop()
{
    Zu::MutexLock const guard(lock);
    running = false;
    ++revision;
    changed.NotifyAll();
    if (thisTimer != this)
    {
        changed.WaitUntil(lock, wTIMEOUT_INFINITE,
                          [this, awaited = callsBegun]() ZU_REQUIRES(lock) { return callsEnded >= awaited; });
    }
}

void AsyncTimer::State::End()
{
    Zu::MutexLock const guard(lock);
    running = false;
    ending = true;
    ++revision;
    changed.NotifyAll();
}

void AsyncTimer::State::Work()
{
    thisTimer = this;
    Zu::MutexLock const guard(lock);
    while (!ending)
    {
        uint64 const seen = revision;
        uint64 const deadline = running ? nextUsec : wTIMEOUT_INFINITE;
        if (!changed.WaitUntil(lock, deadline, [this, seen]() ZU_REQUIRES(lock) { return revision != seen; }))
        {
            Tick();
        }
    }
}

void AsyncTimer::State::Tick()
{
    uint64 const seen = revision;
    ++callsBegun;
    lock.Unlock();
    ZU_GUARD_BOUNDARY([this] { callback(*timer); });
    lock.Lock();
    ++callsEnded;
    changed.NotifyAll();
    if (revision == seen)
    {
        PlanNext();
    }
}

void AsyncTimer::State::PlanNext()
{
    // Ticks stay multiples of the interval after the first tick, so that delays do not add up. Missed ticks are
    // skipped.
    uint64 const now = wTime_NowUsec();
    uint64 const passed = now > nextUsec ? (now - nextUsec) / intervalUsec : 0;
    uint64 const last = nextUsec + passed * intervalUsec;
    nextUsec = intervalUsec < wTIMEOUT_INFINITE - last ? last + intervalUsec : wTIMEOUT_INFINITE;
}

AsyncTimer::AsyncTimer(std::function<void(AsyncTimer&)> callback) : state(std::make_shared<State>())
{
    if (!callback)
    {
        ZU_THROW(Status::BAD_ARGUMENT);
    }
    state->callback = std::move(callback);
    state->timer = this;
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "AsyncTimer"));
}

AsyncTimer::~AsyncTimer()
{
    // Then `~wThread` joins the thread, or detaches it when the callback calls this destructor.
    state->End();
}

void AsyncTimer::Start(uint64 intervalUsec, bool atOnce)
{
    if (intervalUsec == 0)
    {
        ZU_THROW(Status::BAD_ARGUMENT);
    }
    StartThread();
    state->Start(intervalUsec, atOnce);
}

void AsyncTimer::Stop()
{
    state->Stop();
}

int AsyncTimer::ThreadFunction(void* argument)
{
    std::unique_ptr<std::shared_ptr<State>> const shared(static_cast<std::shared_ptr<State>*>(argument));
    (*shared)->Work();
    return 1;
}

void AsyncTimer::StartThread()
{
    Zu::MutexLock const guard(threadLock);
    if (threadStarted)
    {
        return;
    }
    auto shared = std::make_unique<std::shared_ptr<State>>(state);
    ZU_CHECK(wThread_Start(thread, &ThreadFunction, shared.get()));
    static_cast<void>(shared.release()); // the new thread owns it now
    threadStarted = true;
}

} // namespace Zu
