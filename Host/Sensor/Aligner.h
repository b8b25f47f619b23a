#pragma once

#include "ZuApi/Event.h"
#include "ZuScan/Sensor.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

namespace ZuHost
{

/// The state in documents: "notAligned", "aligning" or "aligned".
char const* TextFor(ZuScan::AlignState state);

/// Simulates the alignment of a scanner, which takes a fixed time. Any thread may call; the event fires on the thread
/// "Aligner".
class Aligner final
{
public:
    static constexpr uint64 DEFAULT_DURATION_USEC = 500'000;

    /// `newDurationUsec`: how long an alignment takes.
    explicit Aligner(uint64 newDurationUsec = DEFAULT_DURATION_USEC);
    ~Aligner(); ///< ends a running alignment without firing the event

    Aligner(Aligner const&) = delete;
    Aligner& operator=(Aligner const&) = delete;

    /// Begins an alignment. Throws `Zu::Status::BUSY` while one runs.
    void Begin();

    /// Takes the alignment back. A running alignment ends as cancelled.
    void Clear();

    ZuScan::AlignState State() const;

    /// Fires once at the end of each alignment.
    Zu::Event<ZuScan::AlignCompletionStatus>& CompletedEvent();

private:
    static int RunThread(void* aligner);
    void Run();

    uint64 const durationUsec;
    Zu::Event<ZuScan::AlignCompletionStatus> completedEvent; // has its own lock; fired without `lock`

    // A leaf; guards all members below except the thread.
    mutable Zu::Mutex lock;
    Zu::CondVar changed;
    ZuScan::AlignState state ZU_GUARDED_BY(lock) = ZuScan::AlignState::NOT_ALIGNED;
    uint64 doneAtUsec ZU_GUARDED_BY(lock) = wTIMEOUT_INFINITE; // end of the running alignment
    uint64 cancelled ZU_GUARDED_BY(lock) = 0; // cancelled alignments for which the event has yet to fire
    bool isClosing ZU_GUARDED_BY(lock) = false;

    wThread thread; // last: it uses all members above
};

} // namespace ZuHost
