#include "Host/Log/LogBudget.h"

#include <cstring>

namespace ZuHost
{

LogBudget::LogBudget() = default;
LogBudget::~LogBudget() = default;

bool LogBudget::Take(Zu::Logging::Entry const& entry, uint64 nowUsec)
{
    Window& window = WindowOf(entry);
    uint64 const bytes = std::strlen(entry.text);
    if (window.lines == 0)
    {
        window.beginUsec = nowUsec;
    }
    if (window.lines < MAX_LINES && (window.lines == 0 || window.bytes + bytes <= MAX_BYTES))
    {
        ++window.lines;
        window.bytes += bytes;
        return true;
    }
    if (window.leftOut.lines == 0)
    {
        window.leftOut = {entry.flags, entry.label, entry.text, 0, 0};
    }
    ++window.leftOut.lines;
    return false;
}

std::vector<LogBudget::LeftOut> LogBudget::EndWindows(uint64 nowUsec, bool endsAll)
{
    std::vector<LeftOut> ended;
    for (auto one = windows.begin(); one != windows.end();)
    {
        Window& window = one->second;
        if (!endsAll && nowUsec < window.beginUsec + WINDOW_USEC)
        {
            ++one;
            continue;
        }
        if (window.leftOut.lines > 0)
        {
            window.leftOut.seconds = (nowUsec - window.beginUsec) / 1'000'000;
            ended.push_back(std::move(window.leftOut));
        }
        one = windows.erase(one);
    }
    return ended;
}

LogBudget::Window& LogBudget::WindowOf(Zu::Logging::Entry const& entry)
{
    // The texts and not their addresses: those of a plug-in that is unloaded may come back with another meaning.
    std::string place = std::string(entry.file) + ':' + std::to_string(entry.line) + ':' + entry.label;
    if (windows.size() >= MAX_PLACES && !windows.contains(place))
    {
        place.clear();
    }
    return windows[place];
}

} // namespace ZuHost
