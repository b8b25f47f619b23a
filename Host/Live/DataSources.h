#pragma once

#include "Host/Sensor/FrameHistory.h"
#include "wApi/wTypes.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ZuHost
{

/// A data source that can be chosen for output maps and register blocks.
struct DataSource
{
    std::string id;
    std::string displayName;
    std::string description;
    std::string unit;                       ///< empty for a number without a unit
    std::optional<std::size_t> measurement; ///< the index in `MEASUREMENTS`; none: the stamp
};

/// The data sources and their values.
namespace DataSources
{

/// Lists the present sources.
using List = std::function<std::vector<DataSource>()>;

/// The sources of the simulated sensor.
std::vector<DataSource> OfSensor();

/// The source of this name in the list.
std::optional<DataSource> Find(List const& list, std::string const& id);

/// The stamp as clients see it.
nlohmann::json StampOf(wStamp const& stamp);

/// The value of a measurement; null for a missing one.
nlohmann::json ValueOf(double value);

/// The time in seconds since a moment of `wTime_NowUsec`.
double AgeSec(uint64 momentUsec);

/// The members that change with each frame. `frame` may be null.
nlohmann::json NewestOf(DataSource const& source, SharedFrame const& frame);

} // namespace DataSources

} // namespace ZuHost
