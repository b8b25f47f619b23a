#include "Host/StandardErrorSink.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>

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

spdlog::level::level_enum LoggerLevelOf(LogLevel level)
{
    switch (level)
    {
    case LogLevel::INFO:
        return spdlog::level::info;
    case LogLevel::WARNING:
        return spdlog::level::warn;
    default:
        return spdlog::level::err;
    }
}

} // namespace

StandardErrorSink::StandardErrorSink(LogLevel lowestLevel)
    : lowest(lowestLevel),
      logger(std::make_shared<spdlog::logger>("host", std::make_shared<spdlog::sinks::stderr_sink_mt>()))
{
    logger->set_pattern("%Y-%m-%d %H:%M:%S.%e %-7l %v");
}

StandardErrorSink::~StandardErrorSink() = default;

bool StandardErrorSink::Wants(uint64 flags) const
{
    return LevelOf(flags) >= lowest;
}

void StandardErrorSink::Write(Zu::Logging::Entry const& entry)
{
    logger->log(LoggerLevelOf(LevelOf(entry.flags)), "[{}] {}", entry.label, entry.text);
}

LogScope::LogScope(LogLevel lowestLevel) : sink(std::make_shared<StandardErrorSink>(lowestLevel))
{
    Zu::Logging::AddSink(sink);
}

LogScope::~LogScope()
{
    Zu::Logging::RemoveSink(sink);
}

} // namespace ZuHost
