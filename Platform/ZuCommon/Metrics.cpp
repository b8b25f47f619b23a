#include "ZuCommon/Metrics.h"

#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Structure.h"

#include <nlohmann/json.hpp>

namespace ZuCommon
{

template class IMetricsReporter<>;
template class IMetricsReporter<std::string const&>;

nlohmann::json MetricsJsonSerializer::Serialize(IMetricsSource const& source)
{
    return Zu::Properties::JsonSerializer::Serialize(source.GetMetrics());
}

nlohmann::json MetricsJsonSerializer::SerializeSchema(IMetricsSource const& source)
{
    return Zu::Properties::JsonSerializer::SerializeSchema(source.GetMetrics());
}

} // namespace ZuCommon
