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

/// The metrics of one source with a fixed name: the last report, and a stream of the following reports.
///
/// It has no lock of its own: the caller starts and stops streams one at a time.
class ZUCONTROL_INTERNAL_API ControlMetricsResourceBase : public ZuRest::StreamResourceBase,
                                                          public ZuRest::DocumentResourceBase
{
public:
    /// `usedMetrics` outlives the resource. `newName` is the type name for ControlMetrics.
    ControlMetricsResourceBase(ControlMetrics& usedMetrics, std::string newName);
    ~ControlMetricsResourceBase() override; ///< ends the remaining streams

    IStreamableResource* StreamableProvider() override;

    /// The last report, and its schema under "_schema" when the request asks for it. Throws as ControlMetrics does.
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    uint32 StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& request) override;
    void StopStream(uint32 streamId) override;

private:
    ControlMetrics& metrics;
    std::string const name;
    uint32 nextStreamId = 0; // ids are not reused: a second stop cannot stop another stream
    std::map<uint32, ControlMetrics::CallbackId> streams;
};

} // namespace ZuControl::Protocol
