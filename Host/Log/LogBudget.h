#pragma once

#include "ZuApi/Logging.h"

#include <map>
#include <string>
#include <vector>

namespace ZuHost
{

/// Limits the lines of each place in the program, so that no client can flood the log.
///
/// A window begins with the first line of a place. The lines of a window beyond the budget are left out and counted.
/// Not thread-safe. Times are those of `wTime_NowUsec`.
class LogBudget final
{
public:
    static constexpr uint64 WINDOW_USEC = 10'000'000;
    static constexpr uint64 MAX_LINES = 100;
    static constexpr uint64 MAX_BYTES = 64 * 1024; ///< the first line of a window may be longer
    static constexpr uint64 MAX_PLACES = 1024;     ///< all further places share one budget

    /// The lines of one window of a place that were left out.
    struct LeftOut
    {
        uint64 flags;
        std::string label;
        std::string text; ///< of the first of these lines
        uint64 lines;
        uint64 seconds; ///< since the window began
    };

    LogBudget();
    ~LogBudget();

    LogBudget(LogBudget const&) = delete;
    LogBudget& operator=(LogBudget const&) = delete;

    /// Whether the line may be written; counts it in its window.
    bool Take(Zu::Logging::Entry const& entry, uint64 nowUsec);

    /// Ends the windows that are over at `nowUsec`, or all. Returns those that have left lines out.
    std::vector<LeftOut> EndWindows(uint64 nowUsec, bool endsAll);

private:
    struct Window
    {
        uint64 beginUsec = 0;
        uint64 lines = 0;
        uint64 bytes = 0;
        LeftOut leftOut{};
    };

    Window& WindowOf(Zu::Logging::Entry const& entry);

    std::map<std::string, Window> windows; // by file, line and label
};

} // namespace ZuHost
