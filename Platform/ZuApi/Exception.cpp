#include "ZuApi/Exception.h"

#include "ZuApi/FormatText.h"
#include "ZuApi/Logging.h"

#include <cstdarg>

namespace Zu
{

namespace
{

char const* TextOf(std::exception const& exception)
{
    return exception.what() != nullptr ? exception.what() : "";
}

void LogOrigin(std::exception const& exception, unsigned depth)
{
    if (auto const* ours = dynamic_cast<Exception const*>(&exception))
    {
        Logging::Zu_Debug_Log(ours->Line(), ours->File(), Logging::FLAGS_ERROR, ours->Function(),
                              "back trace %u: %s (%s:%d) status %d: %s", depth, ours->Function(), ours->File(),
                              ours->Line(), ours->Status(), ours->what());
        return;
    }
    Logging::Zu_Debug_Log(0, "", Logging::FLAGS_ERROR, "std::exception", "back trace %u: %s", depth, TextOf(exception));
}

} // namespace

Exception::Exception(int thrownLine, char const* thrownFile, int32 statusNumber, char const* functionLabel,
                     char const* format, ...)
    : line(thrownLine), file(thrownFile), status(statusNumber), function(functionLabel != nullptr ? functionLabel : "")
{
    std::va_list arguments;
    va_start(arguments, format);
    text = FormatText(format, arguments);
    va_end(arguments);
}

Exception::Exception(Exception const&) = default;
Exception& Exception::operator=(Exception const&) = default;
Exception::~Exception() = default;

int32 Exception::Status() const noexcept
{
    return status;
}

char const* Exception::what() const noexcept
{
    return text.c_str();
}

char const* Exception::Function() const noexcept
{
    return function.c_str();
}

char const* Exception::File() const noexcept
{
    return file != nullptr ? file : "";
}

int Exception::Line() const noexcept
{
    return line;
}

void Exception::LogException(std::exception const& exception, uint64 /*reserved*/)
{
    if (auto const* ours = dynamic_cast<Exception const*>(&exception))
    {
        Logging::Zu_Debug_Log(ours->Line(), ours->File(), Logging::FLAGS_ERROR, ours->Function(),
                              "exception with status %d: %s", ours->Status(), ours->what());
        return;
    }
    Logging::Zu_Debug_Log(0, "", Logging::FLAGS_ERROR, "std::exception", "exception: %s", TextOf(exception));
}

void Exception::LogBackTrace(std::exception const& exception)
{
    constexpr unsigned DEEPEST = 64; // bounds the log if a chain of exceptions contains itself
    std::exception const* current = &exception;
    std::exception_ptr held; // keeps the nested exception alive while it is logged
    for (unsigned depth = 0; current != nullptr && depth < DEEPEST; ++depth)
    {
        LogOrigin(*current, depth);
        auto const* nesting = dynamic_cast<std::nested_exception const*>(current);
        std::exception_ptr const inner = nesting != nullptr ? nesting->nested_ptr() : nullptr;
        current = nullptr;
        if (inner == nullptr)
        {
            break;
        }
        try
        {
            std::rethrow_exception(inner);
        }
        catch (std::exception const& nested)
        {
            current = &nested;
            held = inner;
        }
        catch (...)
        {
            Logging::Zu_Debug_Log(0, "", Logging::FLAGS_ERROR, "std::exception", "back trace %u: not a std::exception",
                                  depth + 1);
        }
    }
}

int32 Exception::StatusOf(std::exception const& exception) noexcept
{
    auto const* ours = dynamic_cast<Exception const*>(&exception);
    return ours != nullptr ? ours->Status() : Status::FAILURE;
}

void LogCaught(int line, char const* file, char const* label, char const* format, ...) noexcept
{
    try
    {
        std::va_list arguments;
        va_start(arguments, format);
        std::string const text = FormatText(format, arguments);
        va_end(arguments);
        Logging::Zu_Debug_Log(line, file, Logging::FLAGS_ERROR, label, "%s", text.c_str());
        throw;
    }
    catch (std::exception const& exception)
    {
        try
        {
            Exception::LogException(exception, 0);
            Exception::LogBackTrace(exception);
        }
        catch (...) // no memory for a log line: the report is lost
        {
        }
    }
    catch (...)
    {
        try
        {
            Logging::Zu_Debug_Log(line, file, Logging::FLAGS_ERROR, label, "exception: %s", UNKNOWN_EXCEPTION);
        }
        catch (...) // as above
        {
        }
    }
}

std::string CaughtText()
{
    try
    {
        throw;
    }
    catch (std::exception const& exception)
    {
        return TextOf(exception);
    }
    catch (...)
    {
        return UNKNOWN_EXCEPTION;
    }
}

std::string CaughtReason()
{
    std::string text = CaughtText();
    return text.empty() ? "status " + std::to_string(CaughtStatus()) : text;
}

int32 CaughtStatus() noexcept
{
    try
    {
        throw;
    }
    catch (Exception const& exception)
    {
        return exception.Status();
    }
    catch (...)
    {
        return Status::FAILURE;
    }
}

} // namespace Zu
