#pragma once

#include "wApi/wCondition.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace ZuHost
{

/// Threads that take turns at one duty, the I/O of a server, and run what is given to them.
///
/// Handing work from thread to thread costs more than most work does. So the thread on duty may run what will hardly take
/// long by itself, while another one watches it: when that has been held up for one or two of its looks, it takes over the
/// duty. One thread is always left for the duty. The watcher sleeps while there is nothing to watch.
class WorkerPool final
{
public:
    static constexpr uint64 THREADS = 5;
    static constexpr uint64 LOOK_PERIOD_USEC = 1'000;

    struct Duty
    {
        std::function<void()> doOne; ///< one piece of it; it is called again and again, and may wait
        std::function<void()> wake;  ///< ends a wait; any thread calls
    };

    /// Something that the thread on duty does by itself for as long as this lives, and that may take its time.
    class Aside final
    {
    public:
        /// Belongs to the thread on duty, which has no other one.
        explicit Aside(WorkerPool& usedPool);

        /// From here on the thread is perhaps not on duty any more.
        ~Aside();

        Aside(Aside const&) = delete;
        Aside& operator=(Aside const&) = delete;

        /// Whether it may be done: a watcher is there, who takes over if need be.
        bool IsGranted() const noexcept;

    private:
        WorkerPool& pool;
        uint64 const begun;
    };

    explicit WorkerPool(Duty newDuty);
    ~WorkerPool(); ///< runs what was given, then ends the threads that were started

    WorkerPool(WorkerPool const&) = delete;
    WorkerPool& operator=(WorkerPool const&) = delete;

    /// Starts the threads: the first is on duty. Once. Throws when the system has none left; some may have been started.
    void Start();

    /// Has `work` run by a thread that is not on duty, in the order in which it was given. Any thread may call. What it
    /// throws is logged.
    void Run(std::function<void()> work);

    /// Whether the calling thread is on duty.
    bool IsOnDuty() const noexcept;

private:
    enum class Part
    {
        DUTY,
        WORK,
        END
    };

    static int Main(void* argument);
    Part NextPart(std::function<void()>& work);
    void DoDuty();
    bool Watch(std::unique_lock<std::mutex>& guard);
    bool IsMissed() const noexcept;
    uint64 BeginAside();
    void EndAside(uint64 begun);

    Duty const duty;

    // What the thread on duty and its watcher agree on, in one word: a count of the asides, and the bits of the .cpp.
    std::atomic<uint64> watch = 0;
    std::atomic<bool> isEnding = false; // set under the lock

    std::mutex lock; // a leaf: guards all below
    std::condition_variable changed;
    wCondition watchChanged;
    std::deque<std::function<void()>> waiting;
    uint64 resting = 0; // threads that wait for `changed`
    bool isDutyTaken = false;
    bool isWatched = false;

    std::array<wThread, THREADS> threads; // last: they use all of the above
    uint64 started = 0;
};

} // namespace ZuHost
