#include "Host/Jobs/JobListResource.h"

#include "Host/Jobs/JobManager.h"
#include "Host/Jobs/JobResource.h"
#include "ZuRest/Path.h"
#include "ZuRest/ResponseInfo.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;

} // namespace

JobListResource::JobListResource(JobManager& usedManager) : manager(usedManager)
{
}

JobListResource::~JobListResource() = default;

Json JobListResource::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& response)
{
    Json list = Json::array();
    for (JobManager::Job const& job : manager.List())
    {
        list.push_back(
            {{"name", job.name.Text()}, {"bytes", job.bytes}, {"loaded", job.isLoaded}, {"modified", job.isModified}});
        if (job.bytes != 0)
        {
            response.Link("zu:job", ZuRest::Path::Format("/jobs/:name", {job.name.Text()}), true,
                          {{"title", job.name.Text()}, {"type", JobResource::CONTENT_TYPE}});
        }
        if (job.isLoaded)
        {
            response.Link("zu:jobReport", ZuRest::Path::Format("/jobs/:name/report", {job.name.Text()}), false,
                          nullptr);
        }
    }
    Json const isTemplate{{"templated", true}};
    response.Link("zu:jobLoad", "/jobs/{name}/load", false, isTemplate);
    response.Link("zu:jobSave", "/jobs/{name}/save", false, isTemplate);
    return {{"jobs", std::move(list)}};
}

} // namespace ZuHost
