#include "Host/Jobs/JobReportResource.h"

#include "Host/Jobs/JobManager.h"
#include "Host/Jobs/RequestedJob.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;

char const* SourceOf(LoadReport::Protocol const& protocol)
{
    if (!protocol.isInJob)
    {
        return "none"; // the protocol stayed as it was
    }
    if (protocol.isRefused)
    {
        return "refused"; // the protocol stayed as it was
    }
    return protocol.isFromLastGood ? "lastGood" : "job";
}

} // namespace

JobReportResource::JobReportResource(JobManager& usedManager) : manager(usedManager)
{
}

JobReportResource::~JobReportResource() = default;

Json JobReportResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    return DocumentOf(manager.Report(RequestedJob(request)));
}

Json JobReportResource::DocumentOf(LoadReport const& report)
{
    Json protocols = Json::object();
    for (LoadReport::Protocol const& protocol : report.protocols)
    {
        protocols[protocol.typeName] = {{"source", SourceOf(protocol)},
                                        {"takenOver", protocol.takenOver},
                                        {"reset", protocol.reset},
                                        {"skipped", protocol.skipped},
                                        {"lines", protocol.lines}};
    }
    return {{"job", report.job.Text()}, {"faults", report.faults}, {"protocols", std::move(protocols)}};
}

} // namespace ZuHost
