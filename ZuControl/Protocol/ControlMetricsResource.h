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

/// The metrics of the protocol that the path names: its last report, and a stream of all that come.
///
/// It has no lock of its own: starts and stops of streams come one at a time.
class ZUCONTROL_INTERNAL_API ControlMetricsResource final : public ZuRest::StreamResourceBase,
                                                            public ZuRest::DocumentResourceBase
{
public:
    /// `usedMetrics` outlives the resource.
    explicit ControlMetricsResource(ControlMetrics& usedMetrics);
    ~ControlMetricsResource() override; ///< ends the streams that are left

    IStreamableResource* StreamableProvider() override;

    /// The last report, and its schema under "_schema" when the request asks for it. -997 for a request that names no
    /// protocol, -999 for an unknown one.
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// Refuses what `Document` refuses.
    uint32 StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& request) override;
    void StopStream(uint32 streamId) override;

private:
    struct Stream
    {
        ControlMetrics::CallbackId callback;
        std::string name;
    };

    ControlMetrics& metrics;
    uint32 nextStreamId = 0; // not used again: who stops twice stops nobody else
    std::map<uint32, Stream> streams;
};

} // namespace ZuControl::Protocol
