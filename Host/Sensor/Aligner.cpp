#include "Host/Sensor/Aligner.h"

#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

namespace ZuHost
{

using ZuScan::AlignCompletionStatus;
using ZuScan::AlignState;

char const* TextFor(ZuScan::AlignState state)
{
    switch (state)
    {
    case ZuScan::AlignState::NOT_ALIGNED:
        return "notAligned";
    case ZuScan::AlignState::ALIGNING:
        return "aligning";
    default:
        return "aligned";
    }
}

Aligner::Aligner(uint64 newDurationUsec) : durationUsec(newDurationUsec)
{
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "Aligner"));
    ZU_CHECK(wThread_Start(thread, &Aligner::RunThread, this));
}

Aligner::~Aligner()
{
    {
        Zu::MutexLock const guard(lock);
        isClosing = true;
    }
    changed.NotifyAll();
    ZU_GUARD_DESTRUCTOR([this] { ZU_CHECK(wThread_Join(thread, wTIMEOUT_INFINITE, nullptr)); });
}

void Aligner::Begin()
{
    {
        Zu::MutexLock const guard(lock);
        if (state == AlignState::ALIGNING)
        {
            ZU_THROW(Zu::Status::BUSY, "The scanner is being aligned already");
        }
        state = AlignState::ALIGNING;
        doneAtUsec = wTime_AfterUsec(durationUsec);
    }
    changed.NotifyAll();
}

void Aligner::Clear()
{
    {
        Zu::MutexLock const guard(lock);
        cancelled += state == AlignState::ALIGNING ? 1 : 0;
        state = AlignState::NOT_ALIGNED;
        doneAtUsec = wTIMEOUT_INFINITE;
    }
    changed.NotifyAll();
}

AlignState Aligner::State() const
{
    Zu::MutexLock const guard(lock);
    return state;
}

Zu::Event<AlignCompletionStatus>& Aligner::CompletedEvent()
{
    return completedEvent;
}

int Aligner::RunThread(void* aligner)
{
    static_cast<Aligner*>(aligner)->Run();
    return Zu::Status::SUCCESS;
}

void Aligner::Run()
{
    Zu::MutexLock guard(lock);
    while (!isClosing)
    {
        // Each alignment sets a new deadline. Any change of it ends the wait.
        uint64 const deadlineUsec = doneAtUsec;
        changed.WaitUntil(lock, deadlineUsec, [this, deadlineUsec]() ZU_REQUIRES(lock) {
            return isClosing || cancelled > 0 || doneAtUsec != deadlineUsec;
        });
        bool const isDone = state == AlignState::ALIGNING && wTime_NowUsec() >= doneAtUsec;
        if (isClosing || (cancelled == 0 && !isDone))
        {
            continue;
        }
        auto const status = cancelled > 0 ? AlignCompletionStatus::CANCELLED : AlignCompletionStatus::SUCCESS;
        if (cancelled > 0)
        {
            --cancelled;
        }
        else
        {
            state = AlignState::ALIGNED;
            doneAtUsec = wTIMEOUT_INFINITE;
        }
        guard.Unlock(); // handlers may call the aligner
        ZU_GUARD_BOUNDARY([this, status] { completedEvent.Fire(status); });
        guard.Lock();
    }
}

} // namespace ZuHost
