#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <mutex>
#include <pthread.h>

// Annotations for clang's thread-safety analysis: which lock guards a member, and which function takes or needs a lock.
// They are empty for GCC, which does not know them.
#ifdef __clang__
#define ZU_THREAD_ANNOTATION(mark) __attribute__((mark))
#else
#define ZU_THREAD_ANNOTATION(mark)
#endif

#define ZU_CAPABILITY(name) ZU_THREAD_ANNOTATION(capability(name))
#define ZU_SCOPED_CAPABILITY ZU_THREAD_ANNOTATION(scoped_lockable)
#define ZU_GUARDED_BY(lock) ZU_THREAD_ANNOTATION(guarded_by(lock))
#define ZU_REQUIRES(...) ZU_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ZU_ACQUIRE(...) ZU_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ZU_RELEASE(...) ZU_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define ZU_EXCLUDES(...) ZU_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// For a function that the analysis cannot follow. A comment beside it says why the function is correct.
#define ZU_NO_THREAD_SAFETY_ANALYSIS ZU_THREAD_ANNOTATION(no_thread_safety_analysis)

// The locks of this system. Other headers and sources do not name std::mutex, std::unique_lock or
// std::condition_variable: clang's thread-safety analysis checks the types below and cannot check those.

namespace Zu
{

/// A mutual exclusion lock. Members that it guards are marked `ZU_GUARDED_BY`. A thread must not take it twice.
class ZU_CAPABILITY("mutex") Mutex
{
public:
    Mutex() = default;
    ~Mutex() = default;
    Mutex(Mutex const&) = delete;
    Mutex& operator=(Mutex const&) = delete;

    void Lock() ZU_ACQUIRE()
    {
        native.lock();
    }

    void Unlock() ZU_RELEASE()
    {
        native.unlock();
    }

private:
    friend class CondVar;

    std::mutex native;
};

/// A mutual exclusion lock that one thread may take any number of times, for code that calls back into itself under the
/// lock.
class ZU_CAPABILITY("mutex") RecursiveMutex
{
public:
    RecursiveMutex() = default;
    ~RecursiveMutex() = default;
    RecursiveMutex(RecursiveMutex const&) = delete;
    RecursiveMutex& operator=(RecursiveMutex const&) = delete;

    void Lock() ZU_ACQUIRE()
    {
        native.lock();
    }

    void Unlock() ZU_RELEASE()
    {
        native.unlock();
    }

private:
    std::recursive_mutex native;
};

/// Holds a `Mutex` or `RecursiveMutex` from its construction to its destruction. A function may release the lock in
/// between, to call other code without it, and take it again.
template <typename Lockable>
class ZU_SCOPED_CAPABILITY MutexLock
{
public:
    explicit MutexLock(Lockable& heldMutex) ZU_ACQUIRE(heldMutex) : mutex(heldMutex)
    {
        mutex.Lock();
    }

    ~MutexLock() ZU_RELEASE()
    {
        if (held)
        {
            mutex.Unlock();
        }
    }

    MutexLock(MutexLock const&) = delete;
    MutexLock& operator=(MutexLock const&) = delete;

    /// The lock must not be held by this guard.
    void Lock() ZU_ACQUIRE()
    {
        mutex.Lock();
        held = true;
    }

    /// The lock must be held by this guard.
    void Unlock() ZU_RELEASE()
    {
        held = false;
        mutex.Unlock();
    }

private:
    Lockable& mutex;
    bool held = true;
};

template <typename Lockable>
MutexLock(Lockable&) -> MutexLock<Lockable>;

/// Lets threads wait until a condition holds that a `Mutex` guards.
///
/// Timed waits follow the monotonic clock of `wTime_NowUsec`: setting the machine's clock neither shortens nor
/// lengthens them. The predicate runs under the mutex; mark it `ZU_REQUIRES(mutex)`, so that the analysis checks what
/// it reads.
class ZUAPI_API CondVar
{
public:
    CondVar() noexcept;
    ~CondVar();

    CondVar(CondVar const&) = delete;
    CondVar& operator=(CondVar const&) = delete;

    void NotifyOne() noexcept;
    void NotifyAll() noexcept;

    /// Releases `mutex` and waits until `isReached()`; `mutex` is held again on return.
    template <typename Predicate>
    void Wait(Mutex& mutex, Predicate isReached)
        ZU_REQUIRES(mutex) ZU_NO_THREAD_SAFETY_ANALYSIS // the predicate has its own annotation
    {
        while (!isReached())
        {
            WaitOnce(mutex, wTIMEOUT_INFINITE);
        }
    }

    /// As `Wait`, until the moment `deadlineUsec` of `wTime_NowUsec` at the latest; `wTIMEOUT_INFINITE` is no deadline.
    /// Returns the last result of `isReached()`.
    template <typename Predicate>
    bool WaitUntil(Mutex& mutex, uint64 deadlineUsec, Predicate isReached)
        ZU_REQUIRES(mutex) ZU_NO_THREAD_SAFETY_ANALYSIS // the predicate has its own annotation
    {
        while (!isReached())
        {
            if (!WaitOnce(mutex, deadlineUsec))
            {
                return isReached();
            }
        }
        return true;
    }

private:
    /// False when the deadline has passed. True may be a spurious wake-up.
    bool WaitOnce(Mutex& mutex, uint64 deadlineUsec) noexcept ZU_REQUIRES(mutex);

    pthread_cond_t condition;
};

} // namespace Zu
