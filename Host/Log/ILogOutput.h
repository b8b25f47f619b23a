#pragma once

#include "Host/CommandLine/Options.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ZuHost
{

/// One entry of the log. The texts are valid as long as those that they were made from.
struct LogRecord
{
    LogLevel level = LogLevel::INFO;
    std::string_view label;   ///< the function, or the label of the lines for users
    std::string_view text;    ///< what happened
    std::string_view service; ///< the service that the entry names; may be empty
    std::string_view file;    ///< of the source; may be empty
    int line = 0;
    bool isForUser = false;
    int32 status = 0; ///< of the exception that is being handled; 0: none
};

/// Where the log goes, and the form of its records there. Any thread may call.
class ILogOutput
{
public:
    virtual ~ILogOutput();

    /// A pipe, a file, a terminal or a connected socket. It stays open as long as the output exists.
    virtual int Descriptor() const = 0;

    /// The bytes of a record.
    virtual std::string Format(LogRecord const& record) const = 0;

    /// How many bytes of `records`, which are not empty, one write may take without blocking a thread.
    virtual std::size_t NextWrite(std::string_view records) const = 0;

    /// A sentence for the user: the reader of the log does not keep up.
    virtual std::string StallSentence() const = 0;
};

} // namespace ZuHost
