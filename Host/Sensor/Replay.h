#pragma once

#include "Host/Pcd/RangeImage.h"
#include "Host/Sensor/IProfileSource.h"

namespace ZuHost
{

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
