#include "Host/Sensor/ProfileSource.h"

#include <algorithm>
#include <cmath>
#include <limits>

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

LineRange LineThrough(std::vector<SharedProfile> const& rows)
{
    LineRange line{std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest()};
    for (SharedProfile const& row : rows)
    {
        for (ProfilePoint const& point : *row)
        {
            line = {std::min(line.first, point.x), std::max(line.last, point.x)};
        }
    }
    return line.first <= line.last ? line : LineRange();
}

} // namespace

Replay::Replay(RangeImage const& image)
{
    rows.reserve(image.Height());
    for (uint64 row = 0; row < image.Height(); ++row)
    {
        rows.push_back(std::make_shared<Profile const>(ProfileOf(image.Row(row))));
    }
    line = LineThrough(rows);
}

SharedProfile Replay::ProfileAt(uint64 frame)
{
    return rows[frame % rows.size()];
}

LineRange Replay::Line() const
{
    return line;
}

} // namespace ZuHost
