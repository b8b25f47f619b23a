#pragma once

#include "ZuControl/Control/ControlMetrics.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ZuRest
{
class IStreamReceiver;
}

namespace ZuControl::Protocol::MetricsReport
{

/// The last report of `name` as a document, with its schema under "_schema" when that is wanted. Throws what ControlMetrics
/// throws.
nlohmann::json Read(ControlMetrics& metrics, std::string const& name, bool wantsSchema);

/// Sends each report to `receiver`, never with its schema. What sending throws goes to the report's sender.
ControlMetrics::SnapshotHandler SendTo(ZuRest::IStreamReceiver& receiver);

} // namespace ZuControl::Protocol::MetricsReport
