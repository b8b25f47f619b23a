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
/// The buffer is bounded. In a stream of states each report replaces all earlier reports, so a slow client gets only
/// the newest report. In other streams an equal report that already waits is not kept twice, and beyond the bound the
/// oldest report is dropped. The ids count every report, so that a client detects missed reports by a gap. All
/// operations are thread-safe.
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

    /// Returns all waiting reports as text of the stream; empty if none waits.
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

    Zu::Mutex lock; // a leaf: no other lock is taken under it
    uint64 lastId ZU_GUARDED_BY(lock) = 0;
    bool isAwake ZU_GUARDED_BY(lock) = false;
    std::deque<Event> events ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
