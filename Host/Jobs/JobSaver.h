#pragma once

#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <functional>

namespace ZuHost
{

/// Saves what has changed, soon after the first change; what cannot be saved is tried again, ever more seldom.
///
/// The save runs on the thread "JobSaver"; `Note` may be called on any. One thread starts and stops it.
class JobSaver final
{
public:
    struct Pace
    {
        uint64 delayUsec = 300'000; ///< from the first change to its save: what comes meanwhile goes with it
        uint64 firstRetryUsec = 1'000'000;
        uint64 longestRetryUsec = 60'000'000; ///< each wait is twice the one before, up to this
    };

    /// `newSave` throws when it has not saved; it tells the user itself.
    JobSaver(std::function<void()> newSave, Pace newPace);
    ~JobSaver(); ///< stops

    JobSaver(JobSaver const&) = delete;
    JobSaver& operator=(JobSaver const&) = delete;

    void Start();

    /// Waits for a save that is running; what has not been saved by then is not saved any more. Nothing happens when it does
    /// not run.
    void Stop();

    /// Something has changed.
    void Note();

private:
    static int Main(void* argument);
    bool WaitUntilDue();
    void Save();

    std::function<void()> const save;
    Pace const pace;

    Zu::Mutex lock; // a leaf
    Zu::CondVar changed;
    bool isDue ZU_GUARDED_BY(lock) = false;
    bool isEnding ZU_GUARDED_BY(lock) = false;
    uint64 dueUsec ZU_GUARDED_BY(lock) = 0;   // when, while something is due
    uint64 retryUsec ZU_GUARDED_BY(lock) = 0; // how long the next retry waits; 0 when the last save was a good one

    wThread thread; // last: it uses all of the above
};

} // namespace ZuHost
