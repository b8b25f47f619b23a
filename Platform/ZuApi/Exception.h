#pragma once

#include "ZuApi/FunctionLabel.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <exception>
#include <string>

namespace Zu
{

/// The one exception type of the system. It carries the place of the throw, a status and, unless a log line already
/// gave the details, a text.
class ZUAPI_API Exception : public std::exception
{
public:
    /// `functionLabel` is the qualified name of the throwing function. `format` is a printf format; its placeholders
    /// are all plain ("%u") or all positional ("%1$u"). Null gives the empty text. Pass a text from outside as an
    /// argument of "%s", never as the format.
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

    /// Writes the log entry of `exception`: one line at error level, labelled with the throwing function, with status
    /// and text. `reserved` is 0.
    static void LogException(std::exception const& exception, uint64 reserved);

    /// Writes where `exception` and each exception nested in it were thrown: one line at error level for each,
    /// outermost first.
    static void LogBackTrace(std::exception const& exception);

    /// Returns the status of a `Zu::Exception`, and 0 for any other exception.
    static int32 StatusOf(std::exception const& exception) noexcept;

private:
    int line;
    char const* file; // a literal of the throwing code: a plug-in stays loaded as long as its exceptions exist
    int32 status;
    std::string function;
    std::string text;
};

/// Logs the exception that is being handled at error level: the formatted text, then the log entry and the back trace
/// of the exception. An exception that is no std::exception is logged with `UNKNOWN_EXCEPTION` and without a back
/// trace. Call it from a catch block.
ZUAPI_API void LogCaught(int line, char const* file, char const* label, char const* format, ...) noexcept
    ZU_PRINTF_FORMAT(4, 5);

/// Returns the status of the exception that is being handled, and 0 if it is no `Zu::Exception`. Call it from a catch
/// block.
ZUAPI_API int32 CaughtStatus() noexcept;

/// The text that stands for an exception that is no std::exception.
inline constexpr char const* UNKNOWN_EXCEPTION = "exception of an unknown type";

/// Returns the text of the exception that is being handled, or `UNKNOWN_EXCEPTION` if it is no std::exception. Call it
/// from a catch block.
ZUAPI_API std::string CaughtText();

/// Returns `CaughtText()`, or "status N" for an exception without a text. Call it from a catch block.
ZUAPI_API std::string CaughtReason();

} // namespace Zu

/// Throws a `Zu::Exception` with this status and, if a format is given, a text.
#define ZU_THROW(status, ...)                                                                                          \
    throw ::Zu::Exception(__LINE__, __FILE__, (status), ZU_FUNCTION_LABEL __VA_OPT__(, ) __VA_ARGS__)

/// Throws the status of a platform call that fails, without a text.
#define ZU_CHECK(call)                                                                                                 \
    do                                                                                                                 \
    {                                                                                                                  \
        if (::wStatus const zuStatus = (call); zuStatus != ::Zu::Status::SUCCESS)                                      \
        {                                                                                                              \
            ZU_THROW(zuStatus);                                                                                        \
        }                                                                                                              \
    } while (false)

/// In a catch block: throws a new exception with this text and the caught status, in which the caught exception is
/// nested.
#define ZU_THROW_NESTED(...)                                                                                           \
    ::std::throw_with_nested(::Zu::Exception(__LINE__, __FILE__, ::Zu::CaughtStatus(), ZU_FUNCTION_LABEL, __VA_ARGS__))

/// In a catch block: logs this text and the caught exception. See `Zu::LogCaught`.
#define ZU_LOG_CAUGHT(...) ::Zu::LogCaught(__LINE__, __FILE__, ZU_FUNCTION_LABEL, __VA_ARGS__)
