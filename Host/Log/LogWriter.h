#pragma once

#include "Host/Log/ILogOutput.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"

#include <atomic>
#include <functional>
#include <string>

namespace ZuHost
{

/// Writes records to an output on a thread of its own, so that a slow reader of the log never blocks a thread that
/// logs.
///
/// The records that wait are bounded. While they are at the bound, new records are lost; one that gives their number
/// takes their place. If a write fails, its records are dropped without notice.
/// Threads: "LogWriter", from construction to destruction. Any thread may call the operations.
class LogWriter final
{
public:
    static constexpr uint64 MAX_WAITING_BYTES = 1024 * 1024; ///< as much again may be in the hands of the thread
    static constexpr uint64 STALL_USEC = 1'000'000;
    static constexpr uint64 STOP_PATIENCE_USEC = 2'000'000;

    /// `newOutput` outlives the writer. The thread calls `newWork`, if any, about once a second, but
    /// not while the reader stalls; it must not throw. Throws if the system cannot start a thread.
    explicit LogWriter(ILogOutput const& newOutput, std::function<void()> newWork = nullptr);

    /// Writes the lines that wait. Drops those that the reader does not take within `STOP_PATIENCE_USEC`.
    ~LogWriter();

    LogWriter(LogWriter const&) = delete;
    LogWriter& operator=(LogWriter const&) = delete;

    /// `record` is in the form of the output. Never waits for the reader.
    void Append(std::string const& record) noexcept;

    /// Whether the reader has taken nothing for `STALL_USEC` although lines wait for it, or lines are lost at present.
    bool IsStalled() const;

    /// Returns when every line of every writer has been written, after `timeoutMsec` at the latest. A signal handler
    /// may call it.
    static void AwaitWritten(uint32 timeoutMsec) noexcept;

private:
    static int Main(void* argument);
    void Run();
    std::string TakeWaiting() ZU_REQUIRES(lock);
    void WriteAll(std::string const& text) noexcept;
    bool MustGiveUp() const;

    ILogOutput const& output;
    std::function<void()> const work;
    std::atomic<uint64> stalledSinceUsec{0};                  // the last progress of the present write; 0 without
    std::atomic<uint64> writeDeadlineUsec{wTIMEOUT_INFINITE}; // set by the destructor

    mutable Zu::Mutex lock; // a leaf
    Zu::CondVar awake;
    std::string waiting ZU_GUARDED_BY(lock);
    uint64 lostLines ZU_GUARDED_BY(lock) = 0; // since `waiting` was last taken
    bool isEnding ZU_GUARDED_BY(lock) = false;

    wThread thread; // last: it uses all members above
};

} // namespace ZuHost
