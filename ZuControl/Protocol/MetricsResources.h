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

protected:
    nlohmann::json LastReport(std::string const& source, ZuRest::RequestInfo const& request);

    /// Sends each report of `source` to `receiver`, without its schema; an exception of the receiver reaches the
    /// sender of the report.
    uint32 AddStream(std::string const& source, ZuRest::IStreamReceiver& receiver);

private:
    struct Stream
    {
        ControlMetrics::CallbackId callback;
        std::string source;
    };

    ControlMetrics& metrics;
    std::string const name;
    uint32 nextStreamId = 0; // ids are not reused: a second stop cannot stop another stream
    std::map<uint32, Stream> streams;
};

/// `/controls/hardware/metrics`: the metrics of the inputs and outputs. They are looked up like those of a protocol
/// with the type name "hardware": while there is no such type, each request throws `Zu::Status::NOT_FOUND`.
class ZUCONTROL_INTERNAL_API HardwareMetricsResource final : public ControlMetricsResourceBase
{
public:
    explicit HardwareMetricsResource(ControlMetrics& usedMetrics);
    ~HardwareMetricsResource() override;
};

/// `/controls/:protocol/metrics`: the metrics of the protocol that the path names.
class ZUCONTROL_INTERNAL_API ControlMetricsResource final : public ControlMetricsResourceBase
{
public:
    explicit ControlMetricsResource(ControlMetrics& usedMetrics);
    ~ControlMetricsResource() override;

    // Both throw `Zu::Status::BAD_ARGUMENT` for a request without a protocol and `Zu::Status::NOT_FOUND` for an unknown
    // protocol.
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    uint32 StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& request) override;
};

} // namespace ZuControl::Protocol
