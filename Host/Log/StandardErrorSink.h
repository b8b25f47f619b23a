#pragma once

#include "Host/CommandLine/Options.h"
#include "Host/Log/CrashSignals.h"
#include "Host/Log/LogBudget.h"
#include "Host/Log/LogWriter.h"
#include "ZuApi/Logging.h"

#include <atomic>
#include <memory>
#include <set>
#include <string>

namespace ZuHost
{

/// Writes the log to standard error, one line for each entry: time, level, label, text. Each place in the program has a
/// budget; one line stands for the lines beyond it. Any thread may call; no call waits for the reader of the log.
class StandardErrorSink final : public Zu::Logging::ISink
{
public:
    static constexpr uint64 MAX_TEXT_BYTES = 16 * 1024; ///< the end of a longer text is left out

    explicit StandardErrorSink(LogLevel lowestLevel);
    ~StandardErrorSink() override; ///< as the destructor of LogWriter

    bool Wants(uint64 flags) const override;
    void Write(Zu::Logging::Entry const& entry) override;

    void SetLowestLevel(LogLevel level); ///< call `Zu::Logging::AskSinksAgain` then
    bool IsStalled() const; ///< as `LogWriter::IsStalled`

private:
    void TellLeftOut(bool isEnd);

    std::atomic<LogLevel> lowest;
    Zu::Mutex budgetLock; // a leaf
    LogBudget budget ZU_GUARDED_BY(budgetLock);
    LogWriter writer; // last: its thread uses all members above
};

/// Writes the log of the process to standard error from construction to destruction, also ahead of a crash.
class LogScope final
{
public:
    explicit LogScope(LogLevel lowestLevel);
    ~LogScope();

    LogScope(LogScope const&) = delete;
    LogScope& operator=(LogScope const&) = delete;

    /// Writes entries of this level and above from now on. Any thread may call.
    void SetLowestLevel(LogLevel level);

    /// A sentence for the user if the reader of the log does not keep up, else none. Any thread may call.
    std::set<std::string> Faults() const;

private:
    std::shared_ptr<StandardErrorSink> sink;
    CrashSignals crashSignals; // ends before the sink: a crash then waits for no writer that is being destroyed
};

} // namespace ZuHost
