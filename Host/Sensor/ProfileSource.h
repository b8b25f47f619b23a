#pragma once

#include "Host/Pcd/RangeImage.h"
#include "wApi/wTypes.h"

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

/// Supplies the profiles under the laser line. One thread at a time.
class IProfileSource
{
public:
    virtual ~IProfileSource();

    /// The profile of frame `frame`, counted from 0 at the scan start. Valid until the next call.
    virtual ProfileView ProfileAt(uint64 frame) = 0;
};

/// Replays a recorded range image, one row for each profile, in a loop: frame n is row n modulo the number of rows.
class Replay final : public IProfileSource
{
public:
    /// Converts metres to millimetres: each float is widened to double, then multiplied by 1000. Points with a
    /// coordinate that is not finite are left out.
    explicit Replay(RangeImage const& image);

    ProfileView ProfileAt(uint64 frame) override;

private:
    std::vector<Profile> rows;
};

} // namespace ZuHost
