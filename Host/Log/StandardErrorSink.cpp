#include "Host/Log/StandardErrorSink.h"

#include "Host/Log/LogLine.h"

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

} // namespace

StandardErrorSink::StandardErrorSink(LogLevel lowestLevel) : lowest(lowestLevel), writer(STDERR_FILENO)
{
}

StandardErrorSink::~StandardErrorSink() = default;

bool StandardErrorSink::Wants(uint64 flags) const
{
    return LevelOf(flags) >= lowest;
}

void StandardErrorSink::Write(Zu::Logging::Entry const& entry)
{
    writer.Append(LogLine(LevelOf(entry.flags), entry.label, entry.text));
}

bool StandardErrorSink::IsStalled() const
{
    return writer.IsStalled();
}

LogScope::LogScope(LogLevel lowestLevel) : sink(std::make_shared<StandardErrorSink>(lowestLevel))
{
    Zu::Logging::AddSink(sink);
}

LogScope::~LogScope()
{
    Zu::Logging::RemoveSink(sink);
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
