#pragma once

#include "ZuCommon/Role.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <string_view>

namespace AsciiTcp
{

/// A parsed request line. It refers to the line's bytes.
struct AsciiRequest
{
    /// Longer requests are refused.
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
    std::string_view argument; ///< without blanks around it; may be empty

    /// Parses a line without its line end. Blanks and tabs around verb and argument are ignored. Throws
    /// `Zu::Status::BAD_ARGUMENT` for an empty line, a control character, or a missing or superfluous argument, and
    /// `Zu::Status::NOT_SUPPORTED` for an unknown verb; the text is meant for the client.
    static AsciiRequest Parse(std::string_view line);

    /// The least role of a client that may send this request: VIEWER for reading, OPERATOR for all else.
    static ZuCommon::Role RoleFor(Verb verb);

    /// The word that begins this request: "START".
    static std::string_view NameOf(Verb verb);

    /// All requests with their arguments, in one line.
    static char const* Help();
};

} // namespace AsciiTcp
