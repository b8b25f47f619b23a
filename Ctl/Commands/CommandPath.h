#pragma once

#include <string>

namespace ZuCtl
{

/// The path of a command: of "sensor/start", "AsciiTcp/sendText", "AsciiTcp/outputs/add" or
/// "ModbusTcp/registerAssembly-0/add"; a path with "/" at its beginning stays. With "/" at the end: the list of commands.
/// Throws `Failure` with `ExitStatus::USAGE`.
std::string CommandPath(std::string const& text);

} // namespace ZuCtl
