#pragma once

#include "Host/CommandLine/Options.h"
#include "ZuApi/Logging.h"

#include <memory>

namespace spdlog
{
class logger;
}

namespace ZuHost
{

/// Writes the log to standard error, one line for each entry: time, level, label, text. Any thread may call; a failed
/// write is ignored.
class StandardErrorSink final : public Zu::Logging::ISink
{
public:
    explicit StandardErrorSink(LogLevel lowestLevel);
    ~StandardErrorSink() override;

    bool Wants(uint64 flags) const override;
    void Write(Zu::Logging::Entry const& entry) override;

private:
    LogLevel const lowest;
    std::shared_ptr<spdlog::logger> logger;
};

/// Adds a sink to the log from construction to destruction.
class LogScope final
{
public:
    explicit LogScope(LogLevel lowestLevel);
    ~LogScope();

    LogScope(LogScope const&) = delete;
    LogScope& operator=(LogScope const&) = delete;

private:
    std::shared_ptr<Zu::Logging::ISink> sink;
};

} // namespace ZuHost
