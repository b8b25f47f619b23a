#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace ZuHost
{

/// The program without its process: parses the command line, runs the sensor until `waitForStop` returns, and shuts
/// down in order. If a stop is requested during the start (see `OrderlyStop`), the start ends at its next step.
///
/// When all listeners are ready, writes a line for each address, with HTTPS the fingerprints of the certificates, and then "ready" to `output`. A failure is one line in
/// `errors`. Returns the exit status: 0, 1 when the sensor cannot start or run or its job
/// cannot be saved at the end, 2 for bad input.
int RunHost(std::vector<std::string> const& words, std::ostream& output, std::ostream& errors,
            std::function<void()> const& waitForStop);

} // namespace ZuHost
