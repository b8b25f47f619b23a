#include "Host/Jobs/JobSaver.h"

#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <utility>

namespace ZuHost
{

JobSaver::JobSaver(std::function<void()> newSave, Pace newPace) : save(std::move(newSave)), pace(newPace)
{
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "JobSaver"));
}

JobSaver::~JobSaver()
{
    ZU_GUARD_DESTRUCTOR([this] { Stop(); });
}

void JobSaver::Start()
{
    ZU_CHECK(wThread_Start(thread, &JobSaver::Main, this));
}

void JobSaver::Stop()
{
    {
        Zu::MutexLock const guard(lock);
        isEnding = true;
    }
    changed.NotifyAll();
    wThread_Join(thread, wTIMEOUT_INFINITE, nullptr); // does nothing if the thread was never started
}

void JobSaver::Note()
{
    {
        Zu::MutexLock const guard(lock);
        if (isDue)
        {
            return; // the save that is due includes this change
        }
        isDue = true;
        dueUsec = wTime_AfterUsec(pace.delayUsec);
    }
    changed.NotifyAll();
}

int JobSaver::Main(void* argument)
{
    auto& saver = *static_cast<JobSaver*>(argument);
    while (saver.WaitUntilDue())
    {
        saver.Save();
    }
    return 1;
}

/// Returns false when the saver ends.
bool JobSaver::WaitUntilDue()
{
    Zu::MutexLock const guard(lock);
    changed.WaitUntil(lock, wTIMEOUT_INFINITE, [this]() ZU_REQUIRES(lock) { return isDue || isEnding; });
    changed.WaitUntil(lock, dueUsec, [this]() ZU_REQUIRES(lock) { return isEnding; });
    isDue = false; // later changes need another save
    return !isEnding;
}

void JobSaver::Save()
{
    bool isSaved = false;
    try
    {
        save();
        isSaved = true;
    }
    catch (...) // the user has been told
    {
    }
    Zu::MutexLock const guard(lock);
    if (isSaved)
    {
        retryUsec = 0;
        return;
    }
    retryUsec = retryUsec == 0 ? pace.firstRetryUsec : std::min(2 * retryUsec, pace.longestRetryUsec);
    isDue = true;
    dueUsec = wTime_AfterUsec(retryUsec);
}

} // namespace ZuHost
