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

/// Writes the log to standard error, a line an entry: time, level, label, text. Any thread; a write that fails is lost.
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

/// A sink that is part of the log for as long as this object lives.
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
