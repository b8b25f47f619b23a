#pragma once

#include "Host/Sensor/Measurements.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wHandle.h"

#include <array>
#include <vector>

struct wStamp;

namespace ZuCore
{
class ResultHub;
}

namespace ZuHost
{

/// Makes one result set of each frame and publishes it: "profile/stamp" first, then the measurements in their order.
///
/// It can watch what it publishes, so that the sensor learns whether the consumers keep up. One thread at a time.
class FramePublisher final
{
public:
    static constexpr char const* STAMP_SOURCE = "profile/stamp";

    /// Throws the status of a platform call that fails, with no text, as all operations do. The hub outlives it.
    explicit FramePublisher(ZuCore::ResultHub& resultHub);
    ~FramePublisher();

    FramePublisher(FramePublisher const&) = delete;
    FramePublisher& operator=(FramePublisher const&) = delete;

    /// Handlers run before this returns. A set that is watched is kept until nobody else has a part of it any more.
    void Publish(wStamp const& stamp, ProfileTool::Results const& results, bool isWatched);

    /// How many of the watched sets somebody else still has a part of: the set, or the message of one of its results. It
    /// lets go of the others.
    std::size_t CountAlive();

    /// Whether less than `mostAlive` of the watched sets are alive. They are counted only when there might be too many.
    bool HasRoom(std::size_t mostAlive);

private:
    wHandle<ZuCore::ResultSetObject> MakeSet(wStamp const& stamp, ProfileTool::Results const& results) const;

    ZuCore::ResultHub& hub;
    wHandle<ZuCore::ResultInfoObject> stampInfo; // made once: every set shares the infos
    std::array<wHandle<ZuCore::ResultInfoObject>, MEASUREMENT_COUNT> measurementInfos;
    std::vector<wHandle<ZuCore::ResultSetObject>> watched;
};

} // namespace ZuHost
