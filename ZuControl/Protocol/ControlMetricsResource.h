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

/// The metrics of the protocol that the path names: the last report, and a stream of the following reports.
///
/// It has no lock of its own: the caller starts and stops streams one at a time.
class ZUCONTROL_INTERNAL_API ControlMetricsResource final : public ZuRest::StreamResourceBase,
                                                            public ZuRest::DocumentResourceBase
{
public:
    /// `usedMetrics` outlives the resource.
    explicit ControlMetricsResource(ControlMetrics& usedMetrics);
    ~ControlMetricsResource() override; ///< ends the remaining streams

    IStreamableResource* StreamableProvider() override;

    /// The last report, and its schema under "_schema" when the request asks for it. Throws `Zu::Status::BAD_ARGUMENT`
    /// for a request without a protocol and `Zu::Status::NOT_FOUND` for an unknown protocol.
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// Throws as `Document` does.
    uint32 StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& request) override;
    void StopStream(uint32 streamId) override;

private:
    struct Stream
    {
        ControlMetrics::CallbackId callback;
        std::string name;
    };

    ControlMetrics& metrics;
    uint32 nextStreamId = 0; // ids are not reused: a second stop cannot stop another stream
    std::map<uint32, Stream> streams;
};

} // namespace ZuControl::Protocol
