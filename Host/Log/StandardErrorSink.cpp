#include "Host/Log/StandardErrorSink.h"

#include "Host/Log/LogLine.h"
#include "ZuApi/Guard.h"
#include "wApi/wTime.h"

#include <unistd.h>

namespace ZuHost
{

namespace
{

LogLevel LevelOf(uint64 flags)
{
    switch (flags & Zu::Logging::LEVEL_MASK)
    {
    case 0:
        return LogLevel::INFO;
    case 1:
        return LogLevel::WARNING;
    default:
        return LogLevel::ERROR;
    }
}

std::string Shortened(std::string_view text)
{
    if (text.size() <= StandardErrorSink::MAX_TEXT_BYTES)
    {
        return std::string(text);
    }
    uint64 const rest = text.size() - StandardErrorSink::MAX_TEXT_BYTES;
    return std::string(text.substr(0, StandardErrorSink::MAX_TEXT_BYTES)) + "... (" + std::to_string(rest) +
           " bytes more)";
}

} // namespace

StandardErrorSink::StandardErrorSink(LogLevel lowestLevel)
    : lowest(lowestLevel), writer(STDERR_FILENO, [this] { ZU_GUARD_BOUNDARY([this] { TellLeftOut(false); }); })
{
}

StandardErrorSink::~StandardErrorSink()
{
    ZU_GUARD_DESTRUCTOR([this] { TellLeftOut(true); });
}

void StandardErrorSink::SetLowestLevel(LogLevel level)
{
    lowest = level;
}

bool StandardErrorSink::Wants(uint64 flags) const
{
    return LevelOf(flags) >= lowest;
}

void StandardErrorSink::Write(Zu::Logging::Entry const& entry)
{
    {
        Zu::MutexLock const guard(budgetLock);
        if (!budget.Take(entry, wTime_NowUsec()))
        {
            return;
        }
    }
    writer.Append(LogLine(LevelOf(entry.flags), entry.label, Shortened(entry.text)));
}

bool StandardErrorSink::IsStalled() const
{
    return writer.IsStalled();
}

void StandardErrorSink::TellLeftOut(bool isEnd)
{
    std::vector<LogBudget::LeftOut> ended;
    {
        Zu::MutexLock const guard(budgetLock);
        ended = budget.EndWindows(wTime_NowUsec(), isEnd);
    }
    for (LogBudget::LeftOut const& leftOut : ended)
    {
        std::string const text = "... " + std::to_string(leftOut.lines) + " more in the last " +
                                 std::to_string(leftOut.seconds) + " s, the first: " + Shortened(leftOut.text);
        writer.Append(LogLine(LevelOf(leftOut.flags), leftOut.label, text));
    }
}

LogScope::LogScope(LogLevel lowestLevel) : sink(std::make_shared<StandardErrorSink>(lowestLevel))
{
    Zu::Logging::AddSink(sink);
}

LogScope::~LogScope()
{
    Zu::Logging::RemoveSink(sink);
}

void LogScope::SetLowestLevel(LogLevel level)
{
    sink->SetLowestLevel(level);
    Zu::Logging::AskSinksAgain();
}

std::set<std::string> LogScope::Faults() const
{
    if (!sink->IsStalled())
    {
        return {};
    }
    return {"The reader of the log on standard error does not keep up; lines of the log wait or are lost."};
}

} // namespace ZuHost
