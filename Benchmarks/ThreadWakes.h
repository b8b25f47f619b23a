#pragma once

#include <string>

namespace ZuBench
{

/// The number of voluntary context switches within one second of the thread of this process with that name. Throws
/// std::runtime_error if there is no such thread.
double WakesPerSecond(std::string const& threadName);

} // namespace ZuBench
