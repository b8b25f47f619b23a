#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace ZuHost
{

/// The program but for its process: reads the command line, runs the sensor until `waitForStop` returns, ends in order.
///
/// When everything listens, `output` gets one line for each address and then "ready". What goes wrong is one clear line in
/// `errors`. Gives the exit status: 0, 1 when the sensor cannot be brought up, 2 for bad input.
int RunHost(std::vector<std::string> const& words, std::ostream& output, std::ostream& errors,
            std::function<void()> const& waitForStop);

} // namespace ZuHost
