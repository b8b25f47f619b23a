#include "ZuControl/Protocol/ControlMetricsResourceBase.h"

#include "ZuApi/Guard.h"
#include "ZuControl/Protocol/MetricsReport.h"
#include "ZuRest/RequestInfo.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace ZuControl::Protocol
{

ControlMetricsResourceBase::ControlMetricsResourceBase(ControlMetrics& usedMetrics, std::string newName)
    : metrics(usedMetrics), name(std::move(newName))
{
}

ControlMetricsResourceBase::~ControlMetricsResourceBase()
{
    for (auto const& stream : streams)
    {
        ZU_GUARD_DESTRUCTOR([&] { metrics.RemoveReportHandler(stream.second, name); });
    }
}

ZuRest::IStreamableResource* ControlMetricsResourceBase::StreamableProvider()
{
    return this;
}

nlohmann::json ControlMetricsResourceBase::Document(ZuRest::RequestInfo const& request,
                                                    ZuRest::ResponseInfo& /*response*/)
{
    return MetricsReport::Read(metrics, name, request.wantsSchema);
}

uint32 ControlMetricsResourceBase::StartStream(ZuRest::IStreamReceiver* receiver,
                                               ZuRest::RequestInfo const& /*request*/)
{
    auto const callback = metrics.AddSnapshotHandler(MetricsReport::SendTo(*receiver), name);
    streams.try_emplace(nextStreamId, callback);
    return nextStreamId++;
}

void ControlMetricsResourceBase::StopStream(uint32 streamId)
{
    auto const position = streams.find(streamId);
    if (position == streams.end())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    metrics.RemoveReportHandler(position->second, name);
    streams.erase(position);
}

} // namespace ZuControl::Protocol
