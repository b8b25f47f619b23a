#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace ZuCtl
{

/// Makes events of the bytes of a server-sent event stream.
class EventReader final
{
public:
    struct Event
    {
        std::string name; ///< empty for a plain event
        std::string data;
    };

    static constexpr std::size_t MAX_EVENT_BYTES = 1024 * 1024;

    /// Takes the next bytes and calls `take` with each event that they end. `take` returns whether to go on; after false
    /// the rest is dropped. Returns what the last call of `take` returned, true without one.
    /// Throws `Failure` with `ExitStatus::NOT_A_SENSOR` if an event is longer than `MAX_EVENT_BYTES`.
    bool Read(std::string_view bytes, std::function<bool(Event const&)> const& take);

private:
    void ReadLine(std::string_view line);

    std::string rest; ///< a line without its end
    Event event;
    bool hasData = false;
};

} // namespace ZuCtl
