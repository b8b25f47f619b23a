#pragma once

#include "ZuApi/Logging.h"

#include <iosfwd>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ZuTest
{

/// One line of the log as a test compares it.
struct LogLine
{
    uint64 flags;
    std::string label;
    std::string text;

    bool operator==(LogLine const&) const = default;
};

std::ostream& operator<<(std::ostream& stream, LogLine const& line);

/// A developer line of the named level and function.
LogLine Info(std::string label, std::string text);
LogLine Warning(std::string label, std::string text);
LogLine Error(std::string label, std::string text);

/// A user line.
LogLine UserInfo(std::string text);
LogLine UserWarning(std::string text);
LogLine UserError(std::string text);

/// The lines that a caught exception logs, as `LinesWithShortTraces` returns them: its log entry, and its back trace in
/// one line. `CaughtForeign` is for an exception that is no `Zu::Exception`.
LogLine CaughtEntry(int32 status, std::string const& text);
LogLine CaughtForeign(std::string const& text);
LogLine BackTrace();

/// Keeps all lines that any thread writes while the recorder exists, in order.
class LogRecorder
{
public:
    LogRecorder();
    ~LogRecorder();

    LogRecorder(LogRecorder const&) = delete;
    LogRecorder& operator=(LogRecorder const&) = delete;

    std::vector<LogLine> Lines() const;

    /// The lines without the log entries and back traces of exceptions.
    std::vector<LogLine> LinesWithoutTraces() const;

    /// All lines. A log entry of an exception lacks its label (the throwing function); a back trace is one line.
    std::vector<LogLine> LinesWithShortTraces() const;

    /// The number of lines with exactly this text.
    std::size_t CountOfText(std::string const& text) const;

    void Clear();

private:
    class Sink;
    std::shared_ptr<Sink> sink;
};

/// True for the log entry of an exception and for a line of its back trace.
bool IsTrace(LogLine const& line);

} // namespace ZuTest
