#pragma once

#include "ZuRest/IStreamReceiver.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <deque>
#include <functional>
#include <string>

namespace ZuHost
{

/// Holds the reports of one stream, in the form of server-sent events, until the connection sends them.
///
/// The buffer is bounded. Where each report stands for all before it, a slow client gets the newest report only.
/// Elsewhere a report that already waits is not kept twice, and beyond the bound the oldest report is dropped. The ids
/// count every report, so that a gap tells a client that it missed some. All operations are thread-safe.
class EventBuffer final : public ZuRest::IStreamReceiver
{
public:
    static constexpr std::size_t MAX_EVENTS = 256;

    /// `newWake` is called when there is something to take, and not again before `Take`. It is called on the thread of
    /// the report and must not block.
    EventBuffer(bool newIsState, std::function<void()> newWake);
    ~EventBuffer() override;

    EventBuffer(EventBuffer const&) = delete;
    EventBuffer& operator=(EventBuffer const&) = delete;

    void Receive(nlohmann::json const& report) override;

    /// Returns everything that waits as text of the stream; empty when nothing waits.
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

    Zu::Mutex lock; // a leaf
    uint64 lastId ZU_GUARDED_BY(lock) = 0;
    bool isAwake ZU_GUARDED_BY(lock) = false;
    std::deque<Event> events ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
