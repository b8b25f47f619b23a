#pragma once

#include "ZuApi/Exception.h"

#include <utility>

namespace Zu
{

/// Runs one step and lets no exception out: a step of a destructor, the body of a thread, a callback. Logs an exception
/// as `text` with its log entry and back trace. Returns true if `step` threw nothing.
template <typename Step>
bool GuardStep(int line, char const* file, char const* label, char const* text, Step&& step) noexcept
{
    try
    {
        std::forward<Step>(step)();
        return true;
    }
    catch (...)
    {
        LogCaught(line, file, label, "%s", text);
        return false;
    }
}

} // namespace Zu

/// Runs one guarded step of a destructor. The argument is a callable.
#define ZU_GUARD_DESTRUCTOR(...)                                                                                       \
    ::Zu::GuardStep(__LINE__, __FILE__, ZU_FUNCTION_LABEL, "Exception thrown in destructor", __VA_ARGS__)

/// Runs the outermost frame of a thread, a task or a callback. The argument is a callable.
#define ZU_GUARD_BOUNDARY(...) ::Zu::GuardStep(__LINE__, __FILE__, ZU_FUNCTION_LABEL, "EXCEPTION THROWN: ", __VA_ARGS__)
