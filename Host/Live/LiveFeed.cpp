#include "Host/Live/LiveFeed.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuRest/IBodySink.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr uint64 TICK_USEC = 10'000; // the period of the highest rate is a multiple of it

} // namespace

/// Counts a viewer from its admission to its end.
class LiveFeed::Place final
{
public:
    explicit Place(std::atomic<std::size_t>& usedCount) : count(usedCount)
    {
        if (count.fetch_add(1, std::memory_order_relaxed) >= MAX_VIEWERS)
        {
            count.fetch_sub(1, std::memory_order_relaxed);
            ZU_THROW(Zu::Status::BUSY, "There are %zu streams of the sensor already.", MAX_VIEWERS);
        }
    }

    ~Place()
    {
        count.fetch_sub(1, std::memory_order_relaxed);
    }

    Place(Place const&) = delete;
    Place& operator=(Place const&) = delete;

private:
    std::atomic<std::size_t>& count;
};

LiveFeed::LiveFeed() : timer([this](Zu::AsyncTimer& /*timer*/) { Tick(); })
{
}

LiveFeed::~LiveFeed()
{
    ZU_GUARD_DESTRUCTOR([this] { Stop(); }); // before the viewers that its thread uses
}

void LiveFeed::Stop()
{
    {
        Zu::MutexLock const guard(lock);
        isStopped = true;
        std::ranges::for_each(arrivals, [](Viewer const& viewer) { viewer.sink->End(); });
        arrivals.clear();
    }
    timer.Stop(); // afterwards no thread uses `viewers`
    std::ranges::for_each(viewers, [](Viewer const& viewer) { viewer.sink->End(); });
    viewers.clear();
}

LiveFeed::OpenBody LiveFeed::Admit(View view)
{
    auto place = std::make_shared<Place>(viewerCount);
    return [this, view = std::move(view), place = std::move(place)](std::shared_ptr<ZuRest::IBodySink> const& sink) {
        Open(sink, view, place);
    };
}

std::size_t LiveFeed::ViewerCount() const
{
    return viewerCount.load(std::memory_order_relaxed);
}

void LiveFeed::Open(std::shared_ptr<ZuRest::IBodySink> const& sink, View const& view,
                    std::shared_ptr<Place> const& place)
{
    constexpr bool AT_ONCE = true;
    Zu::MutexLock const guard(lock);
    if (isStopped)
    {
        sink->End();
        return;
    }
    uint64 const nowUsec = wTime_NowUsec();
    arrivals.push_back({sink, view, place, nowUsec, nowUsec});
    if (!std::exchange(isRunning, true))
    {
        timer.Start(TICK_USEC, AT_ONCE);
    }
}

void LiveFeed::Tick()
{
    {
        Zu::MutexLock const guard(lock);
        std::ranges::move(arrivals, std::back_inserter(viewers));
        arrivals.clear();
        if (viewers.empty())
        {
            timer.Stop();
            isRunning = false;
            return;
        }
    }
    uint64 const nowUsec = wTime_NowUsec();
    std::erase_if(viewers, [nowUsec](Viewer& viewer) {
        bool goesOn = false;
        if (!ZU_GUARD_BOUNDARY([&] { goesOn = Serve(viewer, nowUsec); }))
        {
            viewer.sink->End();
        }
        return !goesOn;
    });
}

/// Sends what is due. Returns false if the stream has ended.
bool LiveFeed::Serve(Viewer& viewer, uint64 nowUsec)
{
    if (!viewer.sink->IsOpen())
    {
        return false;
    }
    if (nowUsec < viewer.dueUsec || !viewer.sink->IsReady())
    {
        return true;
    }
    Message message = viewer.view.next();
    if (message.isLast)
    {
        viewer.sink->Send(std::move(message.bytes));
        viewer.sink->End();
        return false;
    }
    if (message.bytes.empty() && nowUsec - viewer.sentUsec >= HEARTBEAT_USEC)
    {
        message.bytes = viewer.view.heartbeat;
    }
    if (!message.bytes.empty())
    {
        viewer.sink->Send(std::move(message.bytes));
        viewer.sentUsec = nowUsec;
        constexpr double USEC_A_SECOND = 1e6;
        auto const periodUsec = static_cast<uint64>(USEC_A_SECOND / viewer.view.rateHz);
        viewer.dueUsec = std::max(viewer.dueUsec + periodUsec, nowUsec); // what was missed is not made up for
    }
    return true;
}

} // namespace ZuHost
