#include "Host/Sensor/FrameHistory.h"

#include <algorithm>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr uint64 RATE_SPAN_USEC = 1'000'000;

} // namespace

FrameHistory::FrameHistory() = default;

FrameHistory::~FrameHistory() = default;

void FrameHistory::Add(SharedFrame frame)
{
    {
        Zu::MutexLock const guard(lock);
        newest = frame->sequence;
        count = std::min(count + 1, MAX_FRAMES);
        PlaceOf(newest).swap(frame);
    }
    // The frame that it replaces may be destroyed here, without the lock.
}

void FrameHistory::Clear()
{
    std::array<SharedFrame, MAX_FRAMES> old;
    Zu::MutexLock const guard(lock);
    frames.swap(old);
    count = 0;
}

SharedFrame FrameHistory::Newest() const
{
    Zu::MutexLock const guard(lock);
    return count == 0 ? nullptr : PlaceOf(newest);
}

std::vector<SharedFrame> FrameHistory::After(uint64 sequence, std::size_t most) const
{
    std::vector<SharedFrame> found;
    found.reserve(std::min(most, MAX_FRAMES));
    Zu::MutexLock const guard(lock);
    uint64 const isNew = newest > sequence ? newest - sequence : 0;
    for (uint64 left = std::min<uint64>({isNew, most, count}); left > 0; --left)
    {
        found.push_back(PlaceOf(newest - left + 1));
    }
    return found;
}

double FrameHistory::RateHz(uint64 nowUsec) const
{
    Zu::MutexLock const guard(lock);
    if (count == 0 || PlaceOf(newest)->stamp.stampTime + RATE_SPAN_USEC < nowUsec)
    {
        return 0;
    }
    constexpr double USEC_A_SECOND = 1e6;
    uint64 const lastUsec = PlaceOf(newest)->stamp.stampTime;
    std::size_t steps = 0;
    uint64 firstUsec = lastUsec;
    while (steps + 1 < count && PlaceOf(newest - steps - 1)->stamp.stampTime + RATE_SPAN_USEC >= lastUsec)
    {
        ++steps;
        firstUsec = PlaceOf(newest - steps)->stamp.stampTime;
    }
    return firstUsec < lastUsec ? static_cast<double>(steps) * USEC_A_SECOND / static_cast<double>(lastUsec - firstUsec)
                                : 0;
}

SharedFrame& FrameHistory::PlaceOf(uint64 sequence)
{
    return frames[sequence % MAX_FRAMES];
}

SharedFrame const& FrameHistory::PlaceOf(uint64 sequence) const
{
    return frames[sequence % MAX_FRAMES];
}

} // namespace ZuHost
