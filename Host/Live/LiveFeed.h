#pragma once

#include "ZuApi/AsyncTimer.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ZuRest
{
class IBodySink;
}

namespace ZuHost
{

/// Sends messages to viewers, each at its own rate.
///
/// A message is made only when the connection has taken the one before it: a slow viewer gets the newest state, and the
/// feed holds nothing for it. The messages are made on the thread "AsyncTimer" of the feed, which runs while there is a
/// viewer. All operations are thread-safe.
class LiveFeed final
{
public:
    static constexpr std::size_t MAX_VIEWERS = 64;
    static constexpr uint64 HEARTBEAT_USEC = 1'000'000;

    struct Message
    {
        std::string bytes; ///< empty: nothing is new
        bool isLast = false;
    };

    /// What one viewer sees.
    struct View
    {
        double rateHz = 1; ///< at most so many messages a second
        /// Makes the next message. Called on the feed's thread; must not block. An exception ends the stream.
        std::function<Message()> next;
        std::string heartbeat{}; ///< is sent when nothing is new for a second; empty: nothing is sent
    };

    using OpenBody = std::function<void(std::shared_ptr<ZuRest::IBodySink> const&)>;

    LiveFeed();
    ~LiveFeed();

    LiveFeed(LiveFeed const&) = delete;
    LiveFeed& operator=(LiveFeed const&) = delete;

    /// Admits a viewer. The result, as `Answer::openBody`, begins the stream. The viewer counts until the stream has
    /// ended or the result is destroyed. Throws `Zu::Status::BUSY` beyond MAX_VIEWERS. The feed outlives the result.
    OpenBody Admit(View view);

    /// Ends all streams and waits for a message that is being made. A stream that is opened later ends at once.
    void Stop();

    std::size_t ViewerCount() const;

private:
    class Place; // counts a viewer

    struct Viewer
    {
        std::shared_ptr<ZuRest::IBodySink> sink;
        View view;
        std::shared_ptr<Place> place;
        uint64 dueUsec = 0;
        uint64 sentUsec = 0;
    };

    void Open(std::shared_ptr<ZuRest::IBodySink> const& sink, View const& view, std::shared_ptr<Place> const& place);
    void Tick();
    static bool Serve(Viewer& viewer, uint64 nowUsec);

    std::atomic<std::size_t> viewerCount{0}; // publishes nothing

    Zu::Mutex lock; // the timer's locks are taken under it
    std::vector<Viewer> arrivals ZU_GUARDED_BY(lock);
    bool isRunning ZU_GUARDED_BY(lock) = false;
    bool isStopped ZU_GUARDED_BY(lock) = false;

    std::vector<Viewer> viewers; // used on the timer's thread
    Zu::AsyncTimer timer;        // last: its callback uses all members above
};

} // namespace ZuHost
