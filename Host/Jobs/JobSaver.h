#pragma once

#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <functional>

namespace ZuHost
{

/// Saves changes a moment after the first one. A failed save is tried again, each time after a longer wait.
///
/// The save runs on the thread "JobSaver". Any thread may call `Note`; one thread calls `Start` and `Stop`.
class JobSaver final
{
public:
    struct Pace
    {
        uint64 delayUsec = 300'000; ///< from the first change to its save, which includes the changes made meanwhile
        uint64 firstRetryUsec = 1'000'000;
        uint64 longestRetryUsec = 60'000'000; ///< each wait is twice the one before, up to this
    };

    /// `newSave` throws when the save fails, and reports the failure to the user itself.
    JobSaver(std::function<void()> newSave, Pace newPace);
    ~JobSaver();

    JobSaver(JobSaver const&) = delete;
    JobSaver& operator=(JobSaver const&) = delete;

    /// Starts the thread. Call it once.
    void Start();

    /// Ends the thread after a running save has finished. Changes that are not saved by then are not saved. Does
    /// nothing if the thread does not run.
    void Stop();

    /// Notes that something has changed; the saver saves it soon.
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
    uint64 dueUsec ZU_GUARDED_BY(lock) = 0;   // when to save, while `isDue`
    uint64 retryUsec ZU_GUARDED_BY(lock) = 0; // wait before the next retry; 0 after a successful save

    wThread thread; // last: it uses all members above
};

} // namespace ZuHost
