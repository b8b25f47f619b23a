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

/// A measurement as people and programs see it.
struct MeasurementInfo
{
    char const* key;
    char const* source; ///< its data source
    char const* displayName;
    char const* unit; ///< empty for a number without a unit
    char const* description;
};

/// All measurements, in the same order.
inline constexpr std::array<MeasurementInfo, MEASUREMENT_COUNT> MEASUREMENTS{{
    {"zMax", "profile/zMax", "Largest Height", "mm", "The largest height of the profile."},
    {"zMin", "profile/zMin", "Smallest Height", "mm", "The smallest height of the profile."},
    {"width", "profile/width", "Width", "mm", "The distance from the first to the last point along the line."},
    {"meanZ", "profile/meanZ", "Mean Height", "mm", "The mean height of all points of the profile."},
    {"points", "profile/points", "Points", "", "The number of points of the profile."},
}};

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
