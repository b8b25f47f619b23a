#include "Host/Http/EventBuffer.h"

#include "ZuRest/JsonText.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <utility>

namespace ZuHost
{

EventBuffer::EventBuffer(bool newIsState, std::function<void()> newWake) : isState(newIsState), wake(std::move(newWake))
{
}

EventBuffer::~EventBuffer() = default;

void EventBuffer::Receive(nlohmann::json const& report)
{
    if (Keep(ZuRest::JsonText::Write(report)))
    {
        wake();
    }
}

/// Returns true if the caller must wake the connection.
bool EventBuffer::Keep(std::string text)
{
    Zu::MutexLock const guard(lock);
    if (isState)
    {
        events.clear();
    }
    std::erase_if(events, [&text](Event const& event) { return event.text == text; });
    if (events.size() == MAX_EVENTS)
    {
        events.pop_front();
    }
    events.push_back({++lastId, std::move(text)});
    return !std::exchange(isAwake, true);
}

std::string EventBuffer::Take()
{
    Zu::MutexLock const guard(lock);
    isAwake = false;
    std::string text;
    for (Event const& event : events)
    {
        text.append("id: ").append(std::to_string(event.id)).append("\ndata: ").append(event.text).append("\n\n");
    }
    events.clear();
    return text;
}

} // namespace ZuHost
