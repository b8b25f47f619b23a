#pragma once

#include "ZuApi/Event.h"
#include "ZuScan/AlignCompletionStatus.h"
#include "ZuScan/AlignState.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

namespace ZuHost
{

/// Aligns a scanner, which takes a bounded time. Any thread may call; the event fires on "Aligner".
class Aligner final
{
public:
    static constexpr uint64 DEFAULT_DURATION_USEC = 500'000;

    /// `newDurationUsec`: how long an alignment takes.
    explicit Aligner(uint64 newDurationUsec = DEFAULT_DURATION_USEC);
    ~Aligner(); ///< ends an alignment that runs; its end is not told

    Aligner(Aligner const&) = delete;
    Aligner& operator=(Aligner const&) = delete;

    /// Begins an alignment; -976 while one runs.
    void Begin();

    /// The scanner is not aligned any more. An alignment that runs ends as cancelled.
    void Clear();

    ZuScan::AlignState State() const;

    /// Fires once at the end of each alignment.
    Zu::Event<ZuScan::AlignCompletionStatus>& CompletedEvent();

private:
    static int RunThread(void* aligner);
    void Run();

    uint64 const durationUsec;
    Zu::Event<ZuScan::AlignCompletionStatus> completedEvent; // has a lock of its own; fired under none of ours

    // A leaf: guards all below but the thread.
    mutable Zu::Mutex lock;
    Zu::CondVar changed;
    ZuScan::AlignState state ZU_GUARDED_BY(lock) = ZuScan::AlignState::NOT_ALIGNED;
    uint64 doneAtUsec ZU_GUARDED_BY(lock) = wTIMEOUT_INFINITE; // when the alignment that runs is done
    uint64 cancelled ZU_GUARDED_BY(lock) = 0;                  // alignments whose cancellation is still to be told
    bool isClosing ZU_GUARDED_BY(lock) = false;

    wThread thread; // last: it uses all the others
};

} // namespace ZuHost
