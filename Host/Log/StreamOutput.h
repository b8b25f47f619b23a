#pragma once

#include "Host/Log/ILogOutput.h"

namespace ZuHost
{

/// Writes the log to a stream, one line for each record: time, level, label, text.
class StreamOutput final : public ILogOutput
{
public:
    explicit StreamOutput(int newDescriptor);
    ~StreamOutput() override;

    StreamOutput(StreamOutput const&) = delete;
    StreamOutput& operator=(StreamOutput const&) = delete;

    int Descriptor() const override;
    std::string Format(LogRecord const& record) const override;
    std::size_t NextWrite(std::string_view records) const override;
    std::string StallSentence() const override;

private:
    int const descriptor;
};

} // namespace ZuHost
