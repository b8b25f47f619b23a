#include "ZuControl/Protocol/MetricsResources.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuControl/Control/MetricsRecord.h"
#include "ZuRest/IStreamReceiver.h"
#include "ZuRest/RequestInfo.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace ZuControl::Protocol
{

namespace
{

/// `function` is the label of the operation, for the exception.
std::string const& ProtocolOf(ZuRest::RequestInfo const& request, char const* function)
{
    std::string const* const name = request.FindKey("protocol");
    if (name == nullptr)
    {
        throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function,
                            "Missing control protocol name in request");
    }
    return *name;
}

} // namespace

ControlMetricsResourceBase::ControlMetricsResourceBase(ControlMetrics& usedMetrics, std::string newName)
    : metrics(usedMetrics), name(std::move(newName))
{
}

ControlMetricsResourceBase::~ControlMetricsResourceBase()
{
    for (auto const& entry : streams)
    {
        Stream const& stream = entry.second;
        ZU_GUARD_DESTRUCTOR([&] { metrics.RemoveReportHandler(stream.callback, stream.source); });
    }
}

ZuRest::IStreamableResource* ControlMetricsResourceBase::StreamableProvider()
{
    return this;
}

nlohmann::json ControlMetricsResourceBase::Document(ZuRest::RequestInfo const& request,
                                                    ZuRest::ResponseInfo& /*response*/)
{
    return LastReport(name, request);
}

uint32 ControlMetricsResourceBase::StartStream(ZuRest::IStreamReceiver* receiver,
                                               ZuRest::RequestInfo const& /*request*/)
{
    return AddStream(name, *receiver);
}

void ControlMetricsResourceBase::StopStream(uint32 streamId)
{
    auto const position = streams.find(streamId);
    if (position == streams.end())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    metrics.RemoveReportHandler(position->second.callback, position->second.source);
    streams.erase(position);
}

nlohmann::json ControlMetricsResourceBase::LastReport(std::string const& source, ZuRest::RequestInfo const& request)
{
    auto const snapshot = metrics.Snapshot(source);
    nlohmann::json document = snapshot->values;
    if (request.wantsSchema)
    {
        document["_schema"] = snapshot->schema;
    }
    return document;
}

uint32 ControlMetricsResourceBase::AddStream(std::string const& source, ZuRest::IStreamReceiver& receiver)
{
    auto const callback = metrics.AddSnapshotHandler(
        [&receiver](MetricsSnapshot const& snapshot) { receiver.Receive(snapshot.values); }, source);
    streams.try_emplace(nextStreamId, Stream{callback, source});
    return nextStreamId++;
}

HardwareMetricsResource::HardwareMetricsResource(ControlMetrics& usedMetrics)
    : ControlMetricsResourceBase(usedMetrics, "hardware")
{
}

HardwareMetricsResource::~HardwareMetricsResource() = default;

ControlMetricsResource::ControlMetricsResource(ControlMetrics& usedMetrics)
    : ControlMetricsResourceBase(usedMetrics, "") // each request names its protocol
{
}

ControlMetricsResource::~ControlMetricsResource() = default;

nlohmann::json ControlMetricsResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    return LastReport(ProtocolOf(request, ZU_FUNCTION_LABEL), request);
}

uint32 ControlMetricsResource::StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& request)
{
    return AddStream(ProtocolOf(request, ZU_FUNCTION_LABEL), *receiver);
}

} // namespace ZuControl::Protocol
