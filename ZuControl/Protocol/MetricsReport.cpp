#include "ZuControl/Protocol/MetricsReport.h"

#include "ZuControl/Control/MetricsRecord.h"
#include "ZuRest/IStreamReceiver.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Protocol::MetricsReport
{

nlohmann::json Read(ControlMetrics& metrics, std::string const& name, bool wantsSchema)
{
    auto const snapshot = metrics.Snapshot(name);
    nlohmann::json document = snapshot->values;
    if (wantsSchema)
    {
        document["_schema"] = snapshot->schema;
    }
    return document;
}

ControlMetrics::SnapshotHandler SendTo(ZuRest::IStreamReceiver& receiver)
{
    return [&receiver](MetricsSnapshot const& snapshot) { receiver.Receive(snapshot.values); };
}

} // namespace ZuControl::Protocol::MetricsReport
