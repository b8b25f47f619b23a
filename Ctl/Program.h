#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace ZuCtl
{

/// Runs the program. `words` begin with its name. Returns the exit status, see `ExitStatus`.
int RunCtl(std::vector<std::string> const& words, std::ostream& output, std::ostream& errors);

} // namespace ZuCtl
