#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <mutex>
#include <pthread.h>

/// A condition to wait for, beside the mutex that guards it. Waits end by the clock of wTime, so that a clock that is set
/// neither cuts one short nor draws it out.
class ZUAPI_API wCondition
{
public:
    wCondition() noexcept;
    ~wCondition();

    wCondition(wCondition const&) = delete;
    wCondition& operator=(wCondition const&) = delete;

    void NotifyOne() noexcept;
    void NotifyAll() noexcept;

    /// Waits until `isReached()`, which is called under the mutex, or until the moment `deadlineUsec` of wTime; gives what it
    /// said last.
    template <typename Predicate>
    bool WaitUntil(std::unique_lock<std::mutex>& guard, uint64 deadlineUsec, Predicate isReached)
    {
        while (!isReached())
        {
            if (!WaitOnce(*guard.mutex(), deadlineUsec))
            {
                return isReached();
            }
        }
        return true;
    }

private:
    /// False when the moment has come; a wake-up without a cause gives true.
    bool WaitOnce(std::mutex& mutex, uint64 deadlineUsec) noexcept;

    pthread_cond_t condition;
};
