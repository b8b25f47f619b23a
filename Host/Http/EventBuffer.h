#pragma once

#include "ZuRest/IStreamReceiver.h"
#include "wApi/wTypes.h"

#include <deque>
#include <functional>
#include <mutex>
#include <string>

namespace ZuHost
{

/// Holds the reports of one stream until its client takes them, in the form of server-sent events.
///
/// It never grows beyond its bound. Where each report stands for all before it a slow client gets the newest alone; else a
/// report that waits already is not kept twice, and beyond the bound the oldest goes. The ids count every report, so that a
/// gap tells a client that it missed some. Any thread may call.
class EventBuffer final : public ZuRest::IStreamReceiver
{
public:
    static constexpr std::size_t MAX_EVENTS = 256;

    /// `newWake` is called when there is something to take, and then not again before it has been taken: on the thread of
    /// the report, so it only hands on the news.
    EventBuffer(bool newIsState, std::function<void()> newWake);
    ~EventBuffer() override;

    EventBuffer(EventBuffer const&) = delete;
    EventBuffer& operator=(EventBuffer const&) = delete;

    void Receive(nlohmann::json const& report) override;

    /// All that waits, as text of the stream; empty for nothing.
    std::string Take();

private:
    struct Event
    {
        uint64 id;
        std::string text;
    };

    bool Keep(std::string text);

    bool const isState;
    std::function<void()> const wake;

    std::mutex lock; // a leaf: guards all below
    uint64 lastId = 0;
    bool isAwake = false;
    std::deque<Event> events;
};

} // namespace ZuHost
