#pragma once

#include "ZuControl/Control/ControlMetrics.h"
#include "ZuControl/Export.h"
#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/StreamResourceBase.h"
#include "wApi/wTypes.h"

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ZuControl::Protocol
{

/// The metrics of one thing, under a fixed name: its last report, and a stream of all that come.
///
/// It has no lock of its own: starts and stops of streams come one at a time.
class ZUCONTROL_INTERNAL_API ControlMetricsResourceBase : public ZuRest::StreamResourceBase,
                                                          public ZuRest::DocumentResourceBase
{
public:
    /// `usedMetrics` outlives the resource. `newName` is what ControlMetrics knows the thing by.
    ControlMetricsResourceBase(ControlMetrics& usedMetrics, std::string newName);
    ~ControlMetricsResourceBase() override; ///< ends the streams that are left

    IStreamableResource* StreamableProvider() override;

    /// The last report, and its schema under "_schema" when the request asks for it. Throws what ControlMetrics throws.
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    uint32 StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& request) override;
    void StopStream(uint32 streamId) override;

private:
    ControlMetrics& metrics;
    std::string const name;
    uint32 nextStreamId = 0; // not used again: who stops twice stops nobody else
    std::map<uint32, ControlMetrics::CallbackId> streams;
};

} // namespace ZuControl::Protocol
