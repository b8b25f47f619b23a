#include "Host/Sensor/ProfileSource.h"

#include <cmath>

namespace ZuHost
{

IProfileSource::~IProfileSource() = default;

namespace
{

constexpr double MILLIMETRES_PER_METRE = 1000;

bool IsSeen(RangeImage::Point const& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

Profile ProfileOf(std::span<RangeImage::Point const> row)
{
    Profile profile;
    for (RangeImage::Point const& point : row)
    {
        if (IsSeen(point))
        {
            profile.push_back({static_cast<double>(point.x) * MILLIMETRES_PER_METRE,
                               static_cast<double>(point.z) * MILLIMETRES_PER_METRE});
        }
    }
    return profile;
}

} // namespace

Replay::Replay(RangeImage const& image)
{
    rows.reserve(image.Height());
    for (uint64 row = 0; row < image.Height(); ++row)
    {
        rows.push_back(ProfileOf(image.Row(row)));
    }
}

ProfileView Replay::ProfileAt(uint64 frame)
{
    return rows[frame % rows.size()];
}

} // namespace ZuHost
