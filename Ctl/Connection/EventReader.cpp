#include "Ctl/Connection/EventReader.h"

#include "Ctl/Outcome/Failure.h"

#include <utility>

namespace ZuCtl
{

namespace
{

/// The value of a field of this name; an empty view with null data if the line has another field.
std::string_view ValueOf(std::string_view line, std::string_view name)
{
    if (!line.starts_with(name) || line.substr(name.size(), 1) != ":")
    {
        return {};
    }
    line.remove_prefix(name.size() + 1);
    return line.starts_with(' ') ? line.substr(1) : line;
}

} // namespace

void EventReader::ReadLine(std::string_view line)
{
    if (std::string_view const data = ValueOf(line, "data"); data.data() != nullptr)
    {
        event.data.append(hasData ? "\n" : "").append(data);
        hasData = true;
    }
    else if (std::string_view const name = ValueOf(line, "event"); name.data() != nullptr)
    {
        event.name = name;
    }
}

bool EventReader::Read(std::string_view bytes, std::function<bool(Event const&)> const& take)
{
    rest.append(bytes);
    std::size_t begin = 0;
    for (std::size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n', begin))
    {
        std::string_view line = std::string_view(rest).substr(begin, end - begin);
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        begin = end + 1;
        ReadLine(line);
        if (line.empty() && hasData)
        {
            Event const ended = std::exchange(event, {});
            hasData = false;
            if (!take(ended))
            {
                return false;
            }
        }
    }
    rest.erase(0, begin);
    if (rest.size() + event.data.size() > MAX_EVENT_BYTES)
    {
        throw Failure(ExitStatus::NOT_A_SENSOR, "An event of the stream is longer than 1 MiB");
    }
    return true;
}

} // namespace ZuCtl
