#include "ZuControl/Protocol/ControlMetricsResource.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuControl/Protocol/MetricsReport.h"
#include "ZuRest/RequestInfo.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Protocol
{

namespace
{

constexpr char MISSING_NAME[] = "Missing control protocol name in request";

} // namespace

ControlMetricsResource::ControlMetricsResource(ControlMetrics& usedMetrics) : metrics(usedMetrics)
{
}

ControlMetricsResource::~ControlMetricsResource()
{
    for (auto const& entry : streams)
    {
        Stream const& stream = entry.second;
        ZU_GUARD_DESTRUCTOR([&] { metrics.RemoveReportHandler(stream.callback, stream.name); });
    }
}

ZuRest::IStreamableResource* ControlMetricsResource::StreamableProvider()
{
    return this;
}

nlohmann::json ControlMetricsResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    std::string const* const name = request.FindKey("protocol");
    if (name == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, MISSING_NAME);
    }
    return MetricsReport::Read(metrics, *name, request.wantsSchema);
}

uint32 ControlMetricsResource::StartStream(ZuRest::IStreamReceiver* receiver, ZuRest::RequestInfo const& request)
{
    std::string const* const name = request.FindKey("protocol");
    if (name == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, MISSING_NAME);
    }
    auto const callback = metrics.AddSnapshotHandler(MetricsReport::SendTo(*receiver), *name);
    streams.try_emplace(nextStreamId, Stream{callback, *name});
    return nextStreamId++;
}

void ControlMetricsResource::StopStream(uint32 streamId)
{
    auto const position = streams.find(streamId);
    if (position == streams.end())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    metrics.RemoveReportHandler(position->second.callback, position->second.name);
    streams.erase(position);
}

} // namespace ZuControl::Protocol
