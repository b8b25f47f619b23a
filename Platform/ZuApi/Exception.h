#pragma once

#include "ZuApi/FunctionLabel.h"
#include "wApi/wExport.h"
#include "wApi/wStatus.h"
#include "wApi/wTypes.h"

#include <exception>
#include <string>

namespace Zu
{

/// The one exception type of the system. It tells where it was thrown, with which status and, if there is more to say than
/// a log line already said, in which words.
class ZUAPI_API Exception : public std::exception
{
public:
    /// `functionLabel` is the qualified name of the function that throws. `format` is a printf format whose placeholders are
    /// all plain ("%u") or all positional ("%1$u"); null gives the empty text. A text that comes from elsewhere goes
    /// through "%s", never as the format.
    Exception(int thrownLine, char const* thrownFile, int32 statusNumber, char const* functionLabel,
              char const* format = nullptr, ...) ZU_PRINTF_FORMAT(6, 7);
    Exception(Exception const&);
    Exception& operator=(Exception const&);
    ~Exception() override;

    int32 Status() const noexcept;
    char const* what() const noexcept override;

    char const* Function() const noexcept;
    char const* File() const noexcept;
    int Line() const noexcept;

    /// Writes the log entry of `exception`: one line at error level, under the label of the function that threw it, with
    /// status and text. The second argument is reserved and 0.
    static void LogException(std::exception const& exception, uint64 reserved);

    /// Writes where `exception` and everything nested in it were thrown: a line at error level each, from the outside in.
    static void LogBackTrace(std::exception const& exception);

    /// The status of a Zu::Exception, and 0 for any other.
    static int32 StatusOf(std::exception const& exception) noexcept;

private:
    int line;
    char const* file; // a literal of the throwing code; plug-ins stay loaded for as long as their exceptions live
    int32 status;
    std::string function;
    std::string text;
};

/// Logs the exception that is being handled at error level, in the given form: the text, then its log entry and its back
/// trace. What is no std::exception has an entry with `UNKNOWN_EXCEPTION` and no back trace. To be called from a catch block;
/// throws nothing.
ZUAPI_API void LogCaught(int line, char const* file, char const* label, char const* format, ...) noexcept
    ZU_PRINTF_FORMAT(4, 5);

/// The status that goes on with the exception that is being handled: 0 for all but a Zu::Exception.
ZUAPI_API int32 CaughtStatus() noexcept;

/// The text of an exception that is no std::exception and therefore has none of its own.
inline constexpr char const* UNKNOWN_EXCEPTION = "exception of an unknown type";

/// The text of the exception that is being handled; `UNKNOWN_EXCEPTION` for what is no std::exception. To be called from a
/// catch block.
ZUAPI_API std::string CaughtText();

/// `CaughtText`, or "status N" for an exception without a text. To be called from a catch block.
ZUAPI_API std::string CaughtReason();

} // namespace Zu

/// Throws a Zu::Exception with this status, and a text when a format is given.
#define ZU_THROW(status, ...)                                                                                          \
    throw ::Zu::Exception(__LINE__, __FILE__, (status), ZU_FUNCTION_LABEL __VA_OPT__(, ) __VA_ARGS__)

/// Throws the failing status of a platform call, with no text.
#define ZU_CHECK(call)                                                                                                 \
    do                                                                                                                 \
    {                                                                                                                  \
        if (::wStatus const zuStatus = (call); zuStatus != ::Zu::Status::SUCCESS)                                      \
        {                                                                                                              \
            ZU_THROW(zuStatus);                                                                                        \
        }                                                                                                              \
    } while (false)

/// In a catch block: the caught exception goes on nested in a new one with this text, which keeps its status.
#define ZU_THROW_NESTED(...)                                                                                           \
    ::std::throw_with_nested(::Zu::Exception(__LINE__, __FILE__, ::Zu::CaughtStatus(), ZU_FUNCTION_LABEL, __VA_ARGS__))

/// In a catch block: logs the caught exception behind this text. See Zu::LogCaught.
#define ZU_LOG_CAUGHT(...) ::Zu::LogCaught(__LINE__, __FILE__, ZU_FUNCTION_LABEL, __VA_ARGS__)
