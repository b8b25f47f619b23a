#include "ZuControl/Protocol/MetricsReport.h"

#include "ZuCommon/MetricsJsonSerializer.h"
#include "ZuRest/IStreamReceiver.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Protocol::MetricsReport
{

using ZuCommon::IMetricsSource;
using ZuCommon::MetricsJsonSerializer;

nlohmann::json Read(ControlMetrics& metrics, std::string const& name, bool wantsSchema)
{
    nlohmann::json document;
    metrics.ReadReport(name, [&document, wantsSchema](IMetricsSource const& source) {
        document = MetricsJsonSerializer::Serialize(source);
        if (wantsSchema)
        {
            document["_schema"] = MetricsJsonSerializer::SerializeSchema(source);
        }
    });
    return document;
}

ControlMetrics::ReportHandler SendTo(ZuRest::IStreamReceiver& receiver)
{
    return [&receiver](IMetricsSource const& source) { receiver.Receive(MetricsJsonSerializer::Serialize(source)); };
}

} // namespace ZuControl::Protocol::MetricsReport
