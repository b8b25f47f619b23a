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

/// The last report of `name` as a document, with its schema under "_schema" when `wantsSchema`. Throws as
/// ControlMetrics::Snapshot does.
nlohmann::json Read(ControlMetrics& metrics, std::string const& name, bool wantsSchema);

/// Makes a handler that sends each report to `receiver`, without its schema. The handler passes on the exceptions of
/// the receiver, which outlives it.
ControlMetrics::SnapshotHandler SendTo(ZuRest::IStreamReceiver& receiver);

} // namespace ZuControl::Protocol::MetricsReport
