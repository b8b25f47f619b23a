#pragma once

#include "Host/Pcd/RangeImage.h"
#include "wApi/wTypes.h"

#include <memory>
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
using SharedProfile = std::shared_ptr<Profile const>; ///< never null

/// A range of x along the line, in millimetres.
struct LineRange
{
    double first = 0;
    double last = 0;

    bool operator==(LineRange const&) const = default;
};

/// Supplies the profiles under the laser line. One thread at a time.
class IProfileSource
{
public:
    virtual ~IProfileSource();

    /// The profile of frame `frame`, counted from 0 at the scan start. It never changes, so that any thread may keep
    /// and read it.
    virtual SharedProfile ProfileAt(uint64 frame) = 0;

    /// The range that contains the points of all profiles. Fixed; any thread may call.
    virtual LineRange Line() const = 0;
};

/// Replays a recorded range image, one row for each profile, in a loop: frame n is row n modulo the number of rows.
class Replay final : public IProfileSource
{
public:
    /// Converts metres to millimetres: each float is widened to double, then multiplied by 1000. Points with a
    /// coordinate that is not finite are left out.
    explicit Replay(RangeImage const& image);

    SharedProfile ProfileAt(uint64 frame) override;
    LineRange Line() const override;

private:
    std::vector<SharedProfile> rows;
    LineRange line;
};

} // namespace ZuHost
