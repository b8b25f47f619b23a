#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <string_view>

namespace AsciiTcp
{

/// One request line, taken apart. It refers to the line.
struct AsciiRequest
{
    /// Longer requests are not read.
    static constexpr std::size_t MAX_BYTES = 1024;

    enum class Verb : uint8
    {
        GET,
        SUBSCRIBE,
        UNSUBSCRIBE,
        LIST,
        START,
        STOP,
        ALIGN,
        CLEARALIGN,
        LOAD,
        TRIGGER,
        DOUT,
        AOUT,
        SERIAL,
        READ,
        STATUS,
        HELP
    };

    Verb verb{};
    std::string_view argument; ///< without the blanks around it; empty when there is none

    /// Takes a line without its end. Blanks and tabs may stand around verb and argument. Throws -997 for a line that says
    /// nothing, has a control character in it, or has an argument too many or too few, and -996 for an unknown verb, each
    /// with a text for the client.
    static AsciiRequest Parse(std::string_view line);

    /// All requests with their arguments, on one line.
    static char const* Help();
};

} // namespace AsciiTcp
