#include "Host/Http/WorkerPool.h"

#include "ZuApi/Guard.h"
#include "wApi/wTime.h"

#include <string>
#include <utility>

namespace ZuHost
{

namespace
{

// The word that the thread on duty and its watcher agree on.
constexpr uint64 ASIDE = 1;   // the thread on duty does something else
constexpr uint64 WATCHED = 2; // there is a watcher
constexpr uint64 ASLEEP = 4;  // who is to be woken before he can watch
constexpr uint64 COUNT = 8;   // one aside more, or one change of the thread

constexpr uint64 NOT_BEGUN = 0; // no word of an aside

thread_local WorkerPool const* poolOnDuty = nullptr; // whose duty this thread does

} // namespace

WorkerPool::WorkerPool(Duty newDuty) : duty(std::move(newDuty))
{
}

WorkerPool::~WorkerPool()
{
    {
        std::scoped_lock const guard(lock);
        isEnding = true;
    }
    changed.notify_all();
    watchChanged.NotifyAll();
    ZU_GUARD_DESTRUCTOR(duty.wake);
    while (started != 0)
    {
        --started;
        ZU_GUARD_DESTRUCTOR([this] { ZU_CHECK(wThread_Join(threads[started], wTIMEOUT_INFINITE, nullptr)); });
    }
}

void WorkerPool::Start()
{
    for (; started < THREADS; ++started)
    {
        wThread& thread = threads[started];
        ZU_CHECK(wThread_Construct(&thread));
        ZU_CHECK(wThread_SetName(thread, ("Http.Worker" + std::to_string(started)).c_str()));
        ZU_CHECK(wThread_Start(thread, &WorkerPool::Main, this));
    }
}

void WorkerPool::Run(std::function<void()> work)
{
    std::scoped_lock const guard(lock);
    waiting.push_back(std::move(work));
    if (IsMissed())
    {
        watchChanged.NotifyOne();
    }
    else
    {
        changed.notify_one();
    }
}

bool WorkerPool::IsOnDuty() const noexcept
{
    return poolOnDuty == this;
}

int WorkerPool::Main(void* argument)
{
    auto& pool = *static_cast<WorkerPool*>(argument);
    std::function<void()> work;
    for (Part part = pool.NextPart(work); part != Part::END; part = pool.NextPart(work))
    {
        if (part == Part::DUTY)
        {
            pool.DoDuty();
            continue;
        }
        ZU_GUARD_BOUNDARY(work);
        work = nullptr; // what it holds goes now and not with the next
    }
    return 1;
}

/// Waits for what this thread is to do.
WorkerPool::Part WorkerPool::NextPart(std::function<void()>& work)
{
    std::unique_lock guard(lock);
    while (true)
    {
        if (!std::exchange(isDutyTaken, true))
        {
            return Part::DUTY;
        }
        if (!waiting.empty())
        {
            work = std::move(waiting.front());
            waiting.pop_front();
            return Part::WORK;
        }
        if (isEnding)
        {
            return Part::END;
        }
        if (isWatched)
        {
            ++resting;
            changed.wait(guard);
            --resting;
        }
        else if (Watch(guard))
        {
            return Part::DUTY;
        }
    }
}

void WorkerPool::DoDuty()
{
    poolOnDuty = this;
    while (IsOnDuty() && !isEnding)
    {
        ZU_GUARD_BOUNDARY(duty.doOne);
    }
    poolOnDuty = nullptr;
}

/// Whether the watcher has something better to do: there is more work than others wait for, or the end has come.
bool WorkerPool::IsMissed() const noexcept
{
    return isEnding || waiting.size() > resting;
}

/// Watches the thread on duty as long as it is not missed elsewhere. True when it has taken the duty over; missed while the
/// other one is aside it does so too, since that one comes free in its place.
bool WorkerPool::Watch(std::unique_lock<std::mutex>& guard)
{
    isWatched = true;
    bool hasTaken = false;
    uint64 seen = NOT_BEGUN; // the count at the last look: the same one is aside still, or nothing has happened since
    for (uint64 now = watch.fetch_or(WATCHED) | WATCHED;; now = watch.load())
    {
        bool const isAside = (now & ASIDE) != 0;
        bool const isSame = std::exchange(seen, now / COUNT) == now / COUNT;
        if (!isSame && !IsMissed())
        {
            watchChanged.WaitUntil(guard, wTime_AfterUsec(LOOK_PERIOD_USEC), [this] { return IsMissed(); });
        }
        else if (isAside || IsMissed())
        {
            if (watch.compare_exchange_strong(now, (now & ~(ASIDE | WATCHED)) + COUNT))
            {
                hasTaken = isAside;
                break;
            }
        }
        else if (watch.compare_exchange_strong(now, now | ASLEEP))
        {
            watchChanged.WaitUntil(guard, wTIMEOUT_INFINITE,
                                   [this] { return IsMissed() || (watch.load() & ASLEEP) == 0; });
            watch.fetch_and(~ASLEEP);
        }
    }
    isWatched = false;
    changed.notify_one(); // for the next watcher
    return hasTaken;
}

/// The word of the aside that has begun; `NOT_BEGUN` without a watcher.
uint64 WorkerPool::BeginAside()
{
    uint64 before = watch.load();
    uint64 begun = NOT_BEGUN;
    do
    {
        if ((before & WATCHED) == 0)
        {
            return NOT_BEGUN;
        }
        begun = ((before & ~ASLEEP) | ASIDE) + COUNT;
    } while (!watch.compare_exchange_weak(before, begun));
    if ((before & ASLEEP) != 0)
    {
        std::scoped_lock const guard(lock); // the watcher is not between his look at the word and his sleep
        watchChanged.NotifyOne();
    }
    return begun;
}

void WorkerPool::EndAside(uint64 begun)
{
    if (!watch.compare_exchange_strong(begun, begun & ~ASIDE))
    {
        poolOnDuty = nullptr; // another thread has taken over
    }
}

WorkerPool::Aside::Aside(WorkerPool& usedPool) : pool(usedPool), begun(pool.BeginAside())
{
}

WorkerPool::Aside::~Aside()
{
    if (IsGranted())
    {
        pool.EndAside(begun);
    }
}

bool WorkerPool::Aside::IsGranted() const noexcept
{
    return begun != NOT_BEGUN;
}

} // namespace ZuHost
