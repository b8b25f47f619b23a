#pragma once

#include <span>

namespace ZuCtl
{

/// The exit statuses of the program. Scripts depend on the numbers.
enum class ExitStatus : int
{
    FINE = 0,
    REFUSED = 1,
    USAGE = 2,
    UNREACHABLE = 3,
    NOT_AUTHORISED = 4,
    NOT_A_SENSOR = 5,
    NOT_TRUSTED = 6,
    LOCAL_FILE = 7,
    UNWELL = 8,
    BUSY = 9
};

struct ExitStatusText
{
    ExitStatus status;
    char const* text;
};

/// All statuses with their meaning, in ascending order. The help, the man page and docs/command-line.md show them.
std::span<ExitStatusText const> ExitStatuses() noexcept;

} // namespace ZuCtl
