#pragma once

#include <span>
#include <vector>

namespace ZuHost
{

/// A point under the laser line, in millimetres.
struct ProfilePoint
{
    double x; ///< along the line
    double z; ///< above the conveyor

    bool operator==(ProfilePoint const&) const = default;
};

/// The points that the sensor saw, in the order of the line. Points that it did not see are left out.
using Profile = std::vector<ProfilePoint>;
using ProfileView = std::span<ProfilePoint const>;

} // namespace ZuHost
