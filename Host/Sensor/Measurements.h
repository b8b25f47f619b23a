#pragma once

#include "Host/Sensor/ProfileSource.h"
#include "wApi/wTypes.h"

#include <array>
#include <limits>

namespace ZuHost
{

/// The measurements of a profile, in the order of the result set.
enum class MeasurementKind : uint8
{
    Z_MAX,
    Z_MIN,
    WIDTH,
    MEAN_Z,
    POINTS
};

inline constexpr std::size_t MEASUREMENT_COUNT = 5;

/// The data source of each measurement, in the same order.
inline constexpr std::array<char const*, MEASUREMENT_COUNT> MEASUREMENT_SOURCES{
    "profile/zMax", "profile/zMin", "profile/width", "profile/meanZ", "profile/points"};

/// A value from minimum to maximum, both included, is good. By default all values are good.
struct MeasurementLimits
{
    double minimum = std::numeric_limits<double>::lowest();
    double maximum = std::numeric_limits<double>::max();
};

struct Measurement
{
    /// The value of a measurement that an empty profile does not have; its decision is 0.
    static constexpr double MISSING = std::numeric_limits<double>::lowest();

    double value;
    uint8 decision; ///< 1 within the limits, else 0

    bool operator==(Measurement const&) const = default;
};

/// The simulated tool. It measures a profile in one pass with double precision, and does not allocate.
class ProfileTool final
{
public:
    using Limits = std::array<MeasurementLimits, MEASUREMENT_COUNT>;
    using Results = std::array<Measurement, MEASUREMENT_COUNT>;

    ProfileTool() = default;
    explicit ProfileTool(Limits const& newLimits);

    /// The largest and smallest z, the difference of largest and smallest x, the mean z (sum in the order of the
    /// points, divided by their number), all in millimetres; and the number of points.
    Results Measure(ProfileView profile) const;

private:
    Limits limits;
};

} // namespace ZuHost
