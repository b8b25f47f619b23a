#pragma once

#include "Host/CommandLine/Options.h"
#include "Host/Log/CrashSignals.h"
#include "Host/Log/ILogOutput.h"
#include "Host/Log/LogBudget.h"
#include "Host/Log/LogWriter.h"
#include "ZuApi/Logging.h"

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ZuHost
{

/// Writes the log to an output, one record for each entry. Each place in the program has a budget; one record stands for
/// the lines beyond it. Any thread may call; no call waits for the reader of the log.
class LogSink final : public Zu::Logging::ISink
{
public:
    static constexpr uint64 MAX_TEXT_BYTES = 16 * 1024; ///< the end of a longer text is left out

    LogSink(LogLevel lowestLevel, std::unique_ptr<ILogOutput const> newOutput);
    ~LogSink() override; ///< as the destructor of LogWriter

    bool Wants(uint64 flags) const override;
    void Write(Zu::Logging::Entry const& entry) override;

    void SetLowestLevel(LogLevel level); ///< call `Zu::Logging::AskSinksAgain` then

    /// The names by which an entry may name a service, in its function or its text.
    void SetServices(std::vector<std::string> names);

    /// `ILogOutput::StallSentence` while `LogWriter::IsStalled`, else nothing.
    std::string Fault() const;

private:
    void Append(LogRecord& record);
    void TellLeftOut(bool isEnd);

    std::atomic<LogLevel> lowest;
    std::unique_ptr<ILogOutput const> const output;
    Zu::Mutex budgetLock; // a leaf
    LogBudget budget ZU_GUARDED_BY(budgetLock);
    Zu::Mutex servicesLock; // a leaf
    std::vector<std::string> services ZU_GUARDED_BY(servicesLock);
    LogWriter writer; // last: its thread uses all members above
};

/// Writes the log of the process to standard error, or to the journal behind it, from construction to destruction, also
/// ahead of a crash.
class LogScope final
{
public:
    explicit LogScope(LogLevel lowestLevel);
    ~LogScope();

    LogScope(LogScope const&) = delete;
    LogScope& operator=(LogScope const&) = delete;

    /// Writes entries of this level and above from now on. Any thread may call.
    void SetLowestLevel(LogLevel level);

    /// As `LogSink::SetServices`. Any thread may call.
    void SetServices(std::vector<std::string> names) const;

    /// A sentence for the user if the reader of the log does not keep up, else none. Any thread may call.
    std::set<std::string> Faults() const;

private:
    std::shared_ptr<LogSink> sink;
    CrashSignals crashSignals; // ends before the sink: a crash then waits for no writer that is being destroyed
};

} // namespace ZuHost
