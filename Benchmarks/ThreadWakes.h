#pragma once

#include <string>

namespace ZuBench
{

/// How often the thread of this process with that name went to sleep of its own will within one second, as the system
/// counts it. Throws std::runtime_error when there is no such thread.
double WakesPerSecond(std::string const& threadName);

} // namespace ZuBench
