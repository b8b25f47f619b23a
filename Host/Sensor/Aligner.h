#pragma once

#include "ZuScan/AlignCompletionStatus.h"
#include "ZuScan/AlignState.h"
#include "wApi/wCondition.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <mutex>

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
    mutable std::mutex lock;
    wCondition changed;
    ZuScan::AlignState state = ZuScan::AlignState::NOT_ALIGNED;
    uint64 doneAtUsec = wTIMEOUT_INFINITE; // when the alignment that runs is done
    uint64 cancelled = 0;                  // alignments whose cancellation is still to be told
    bool isClosing = false;

    wThread thread; // last: it uses all the others
};

} // namespace ZuHost
