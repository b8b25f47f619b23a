#pragma once

#include "Host/Sensor/Measurements.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wObject.h"

#include <array>
#include <vector>

struct wStamp;

namespace ZuCore
{
class ResultHub;
}

namespace ZuHost
{

/// Publishes one result set for each frame: "profile/stamp" first, then the measurements in their order.
///
/// It can count the published sets that are still in use, so that the sensor learns whether the consumers keep up. One
/// thread at a time.
class FramePublisher final
{
public:
    static constexpr char const* STAMP_SOURCE = "profile/stamp";

    /// The hub outlives the publisher. All operations throw the status of a failed platform call, without a text.
    explicit FramePublisher(ZuCore::ResultHub& resultHub);
    ~FramePublisher();

    FramePublisher(FramePublisher const&) = delete;
    FramePublisher& operator=(FramePublisher const&) = delete;

    /// Handlers run before this returns. With `isWatched`, the publisher counts the set as alive as long as a consumer
    /// holds a part of it.
    void Publish(wStamp const& stamp, ProfileTool::Results const& results, bool isWatched);

    /// The number of watched sets that a consumer still holds: the set itself, or the message of one of its results.
    /// Releases the others.
    std::size_t CountAlive();

    /// Whether fewer than `mostAlive` of the watched sets are alive. Counts only when there may be too many.
    bool HasRoom(std::size_t mostAlive);

private:
    wHandle<ZuCore::ResultSetObject> MakeSet(wStamp const& stamp, ProfileTool::Results const& results) const;

    ZuCore::ResultHub& hub;
    wHandle<ZuCore::ResultInfoObject> stampInfo; // made once and shared by all sets
    std::array<wHandle<ZuCore::ResultInfoObject>, MEASUREMENT_COUNT> measurementInfos;
    std::vector<wHandle<ZuCore::ResultSetObject>> watched;
};

} // namespace ZuHost
