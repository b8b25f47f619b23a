#include "Host/Sensor/Measurements.h"

#include <algorithm>

namespace ZuHost
{

namespace
{

using Values = std::array<double, MEASUREMENT_COUNT>;

Values ValuesOf(ProfileView profile)
{
    ProfilePoint lowest = profile.front();
    ProfilePoint highest = profile.front();
    double sumZ = 0;
    for (ProfilePoint const& point : profile)
    {
        lowest = {std::min(lowest.x, point.x), std::min(lowest.z, point.z)};
        highest = {std::max(highest.x, point.x), std::max(highest.z, point.z)};
        sumZ += point.z;
    }
    auto const count = static_cast<double>(profile.size());
    return {highest.z, lowest.z, highest.x - lowest.x, sumZ / count, count};
}

} // namespace

ProfileTool::ProfileTool(Limits const& newLimits) : limits(newLimits)
{
}

ProfileTool::Results ProfileTool::Measure(ProfileView profile) const
{
    constexpr auto POINTS = static_cast<std::size_t>(MeasurementKind::POINTS);
    constexpr double MISSING = Measurement::MISSING;
    Values const values = profile.empty() ? Values{MISSING, MISSING, MISSING, MISSING, 0} : ValuesOf(profile);
    Results results;
    for (std::size_t i = 0; i < MEASUREMENT_COUNT; ++i)
    {
        bool const isThere = i == POINTS || !profile.empty(); // unlimited limits would accept the missing value
        bool const isGood = isThere && values[i] >= limits[i].minimum && values[i] <= limits[i].maximum;
        results[i] = {values[i], static_cast<uint8>(isGood ? 1 : 0)};
    }
    return results;
}

} // namespace ZuHost
