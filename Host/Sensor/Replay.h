#pragma once

#include "Host/Pcd/RangeImage.h"
#include "Host/Sensor/IProfileSource.h"

namespace ZuHost
{

/// A recorded range image, a row a profile, over and over: frame n is row n modulo the number of rows.
class Replay final : public IProfileSource
{
public:
    /// Metres become millimetres: each float widened, then times 1000. A point with a coordinate that is no number or not
    /// finite is not there.
    explicit Replay(RangeImage const& image);

    ProfileView ProfileAt(uint64 frame) override;

private:
    std::vector<Profile> rows;
};

} // namespace ZuHost
