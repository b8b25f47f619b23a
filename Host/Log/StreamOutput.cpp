#include "Host/Log/StreamOutput.h"

#include "Host/Log/LogLine.h"

#include <algorithm>
#include <climits>

namespace ZuHost
{

ILogOutput::~ILogOutput() = default;

StreamOutput::StreamOutput(int newDescriptor) : descriptor(newDescriptor)
{
}

StreamOutput::~StreamOutput() = default;

int StreamOutput::Descriptor() const
{
    return descriptor;
}

std::string StreamOutput::Format(LogRecord const& record) const
{
    return LogLine(record.level, record.label, record.text);
}

/// A write of at most `PIPE_BUF` bytes to a pipe that has room does not block.
std::size_t StreamOutput::NextWrite(std::string_view records) const
{
    return std::min<std::size_t>(records.size(), PIPE_BUF);
}

std::string StreamOutput::StallSentence() const
{
    return "The reader of the log on standard error does not keep up; lines of the log wait or are lost.";
}

} // namespace ZuHost
