#pragma once

#include "Host/Sensor/Measurements.h"
#include "Host/Sensor/ProfileSource.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"
#include "wBeacon/wMsgInfo.h"

#include <array>
#include <memory>
#include <vector>

namespace ZuHost
{

/// One frame of the sensor: its stamp, its measurements and its profile. Immutable once it is in the history.
struct Frame
{
    wStamp stamp; ///< its time is one of `wTime_NowUsec`
    ProfileTool::Results results{};
    SharedProfile profile;
    uint64 sequence = 0; ///< grows from frame to frame, also over starts of the scan; 1 for the first one
};

using SharedFrame = std::shared_ptr<Frame const>;

/// The last frames, for people and programs that look at the sensor.
///
/// A frame is shared and not copied, so that a look does not hold up the sensor. All operations are thread-safe.
class FrameHistory final
{
public:
    static constexpr std::size_t MAX_FRAMES = 256;

    FrameHistory();
    ~FrameHistory();

    FrameHistory(FrameHistory const&) = delete;
    FrameHistory& operator=(FrameHistory const&) = delete;

    /// Adds a frame, whose sequence is one more than that of the frame before it.
    void Add(SharedFrame frame);

    /// Forgets all frames.
    void Clear();

    /// The newest frame; null if there is none.
    SharedFrame Newest() const;

    /// The newest frames with a sequence above `sequence`, at most `most`, the oldest first.
    std::vector<SharedFrame> After(uint64 sequence, std::size_t most) const;

    /// The frames a second, measured over the last second; 0 when the newest frame is older than that.
    double RateHz(uint64 nowUsec) const;

private:
    SharedFrame& PlaceOf(uint64 sequence) ZU_REQUIRES(lock);
    SharedFrame const& PlaceOf(uint64 sequence) const ZU_REQUIRES(lock);

    mutable Zu::Mutex lock; // a leaf
    std::array<SharedFrame, MAX_FRAMES> frames ZU_GUARDED_BY(lock);
    uint64 newest ZU_GUARDED_BY(lock) = 0; // sequence of the newest frame
    std::size_t count ZU_GUARDED_BY(lock) = 0;
};

} // namespace ZuHost
