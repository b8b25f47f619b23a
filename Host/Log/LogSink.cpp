#include "Host/Log/LogSink.h"

#include "Host/Log/JournalOutput.h"
#include "Host/Log/StreamOutput.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <unistd.h>
#include <utility>

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
    if (text.size() <= LogSink::MAX_TEXT_BYTES)
    {
        return std::string(text);
    }
    uint64 const rest = text.size() - LogSink::MAX_TEXT_BYTES;
    return std::string(text.substr(0, LogSink::MAX_TEXT_BYTES)) + "... (" + std::to_string(rest) + " bytes more)";
}

/// The first word of `text` that is one of `names`, or nothing.
std::string_view FirstNamed(std::string_view text, std::vector<std::string> const& names)
{
    auto const isOfWord = [](char one) { return std::isalnum(static_cast<unsigned char>(one)) != 0 || one == '_'; };
    auto const* begin = text.begin();
    while ((begin = std::find_if(begin, text.end(), isOfWord)) != text.end())
    {
        auto const* const end = std::find_if_not(begin, text.end(), isOfWord);
        std::string_view const word(begin, end);
        if (std::find(names.begin(), names.end(), word) != names.end())
        {
            return word;
        }
        begin = end;
    }
    return {};
}

/// The status of the exception that is being handled, or `Zu::Status::SUCCESS` without one.
int32 StatusNow()
{
    return std::current_exception() == nullptr ? Zu::Status::SUCCESS : Zu::CaughtStatus();
}

std::unique_ptr<ILogOutput const> OutputOfProcess()
{
    std::unique_ptr<ILogOutput const> journal = JournalOutput::OfStandardError();
    return journal != nullptr ? std::move(journal) : std::make_unique<StreamOutput>(STDERR_FILENO);
}

} // namespace

LogSink::LogSink(LogLevel lowestLevel, std::unique_ptr<ILogOutput const> newOutput)
    : lowest(lowestLevel),
      output(std::move(newOutput)),
      writer(*output, [this] { ZU_GUARD_BOUNDARY([this] { TellLeftOut(false); }); })
{
}

LogSink::~LogSink()
{
    ZU_GUARD_DESTRUCTOR([this] { TellLeftOut(true); });
}

bool LogSink::Wants(uint64 flags) const
{
    return LevelOf(flags) >= lowest;
}

void LogSink::Write(Zu::Logging::Entry const& entry)
{
    {
        Zu::MutexLock const guard(budgetLock);
        if (!budget.Take(entry, wTime_NowUsec()))
        {
            return;
        }
    }
    std::string const text = Shortened(entry.text);
    LogRecord record;
    record.level = LevelOf(entry.flags);
    record.label = entry.label;
    record.text = text;
    record.file = entry.file;
    record.line = entry.line;
    record.isForUser = (entry.flags & Zu::Logging::FLAG_USER) != 0;
    record.status = StatusNow();
    Append(record);
}

void LogSink::SetLowestLevel(LogLevel level)
{
    lowest = level;
}

void LogSink::SetServices(std::vector<std::string> names)
{
    Zu::MutexLock const guard(servicesLock);
    services = std::move(names);
}

std::string LogSink::Fault() const
{
    return writer.IsStalled() ? output->StallSentence() : "";
}

void LogSink::Append(LogRecord& record)
{
    {
        Zu::MutexLock const guard(servicesLock);
        record.service = FirstNamed(record.label, services);
        record.service = record.service.empty() ? FirstNamed(record.text, services) : record.service;
    }
    writer.Append(output->Format(record));
}

void LogSink::TellLeftOut(bool isEnd)
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
        LogRecord record;
        record.level = LevelOf(leftOut.flags);
        record.label = leftOut.label;
        record.text = text;
        record.isForUser = (leftOut.flags & Zu::Logging::FLAG_USER) != 0;
        Append(record);
    }
}

LogScope::LogScope(LogLevel lowestLevel) : sink(std::make_shared<LogSink>(lowestLevel, OutputOfProcess()))
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

void LogScope::SetServices(std::vector<std::string> names) const
{
    sink->SetServices(std::move(names));
}

std::set<std::string> LogScope::Faults() const
{
    std::string fault = sink->Fault();
    return fault.empty() ? std::set<std::string>() : std::set<std::string>{std::move(fault)};
}

} // namespace ZuHost
