#include "Host/Jobs/JobsResources.h"

#include "Host/Jobs/JobDocument.h"
#include "Host/Jobs/JobManager.h"
#include "ZuApi/Exception.h"
#include "ZuRest/Answer.h"
#include "ZuRest/EntityTag.h"
#include "ZuRest/Path.h"
#include "ZuRest/Problem.h"
#include "ZuRest/Request.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResourceRouter.h"
#include "ZuRest/ResponseInfo.h"
#include "wApi/wMutex.h"

#include <cctype>
#include <nlohmann/json.hpp>
#include <utility>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;
using ZuRest::Answer;
using Json = nlohmann::json;

namespace
{

/// The name of the job in the path of a request. Throws `Zu::Status::BAD_ARGUMENT` for an invalid name.
JobName RequestedJob(ZuRest::RequestInfo const& info)
{
    std::string const* const name = info.FindKey("name");
    if (name == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The request names no job.");
    }
    return JobName(*name);
}

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

/// The file name that a client gives to the download (RFC 6266, RFC 8187).
std::string DispositionOf(JobName const& name)
{
    constexpr char const* DIGITS = "0123456789ABCDEF";
    std::string text = "attachment; filename*=UTF-8''";
    for (char const character : name.FileName())
    {
        auto const byte = static_cast<unsigned char>(character);
        if (byte < 0x80 && (std::isalnum(byte) != 0 || character == '-' || character == '_' || character == '.'))
        {
            text.push_back(character);
            continue;
        }
        text.push_back('%');
        text.push_back(DIGITS[byte >> 4U]);
        text.push_back(DIGITS[byte & 0xFU]);
    }
    return text;
}

} // namespace

JobCommandResource::JobCommandResource(Command newCommand) : command(std::move(newCommand))
{
}

JobCommandResource::~JobCommandResource() = default;

ZuRest::ICallableResource* JobCommandResource::CallableProvider()
{
    return this;
}

nlohmann::json JobCommandResource::Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& /*body*/)
{
    return command(RequestedJob(request));
}

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
    Json document{{"job", report.job.Text()}, {"faults", report.faults}, {"protocols", Json::object()}};
    for (LoadReport::Protocol const& protocol : report.protocols)
    {
        bool const isSensor = protocol.typeName == JobDocument::SENSOR;
        Json& place = isSensor ? document["sensor"] : document["protocols"][protocol.typeName];
        place = {{"source", SourceOf(protocol)},
                 {"takenOver", protocol.takenOver},
                 {"reset", protocol.reset},
                 {"skipped", protocol.skipped},
                 {"lines", protocol.lines}};
    }
    return document;
}

JobResource::JobResource(JobManager& usedManager) : manager(usedManager)
{
}

JobResource::~JobResource() = default;

std::vector<std::string> JobResource::ContentMethods() const
{
    return {"GET", "PUT", "DELETE"};
}

Answer JobResource::AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info)
{
    JobName const name = RequestedJob(info);
    bool const isChange = request.method == "PUT" || request.method == "DELETE";
    return isChange ? Change(request, name) : Show(request, name);
}

Answer JobResource::Show(ZuRest::Request const& request, JobName const& name)
{
    std::string bytes = manager.Download(name);
    std::string tag = ZuRest::EntityTag::Of(bytes);
    if (ZuRest::EntityTag::IsNamed(request.ifNoneMatch, tag))
    {
        return {HttpStatus::NOT_MODIFIED, "", "", {{"ETag", std::move(tag)}}};
    }
    return {HttpStatus::OK,
            CONTENT_TYPE,
            std::move(bytes),
            {{"ETag", std::move(tag)}, {"Content-Disposition", DispositionOf(name)}}};
}

Answer JobResource::Change(ZuRest::Request const& request, JobName const& name)
{
    if (!IsPreconditionMet(request, name))
    {
        return ZuRest::Problem{HttpStatus::PRECONDITION_FAILED, "The job at " + request.path + " has changed.", 0, {}}
            .ToAnswer();
    }
    if (request.method == "DELETE")
    {
        manager.Remove(name);
        return {HttpStatus::NO_CONTENT, "", "", {}};
    }
    bool const isNew = manager.Upload(name, request.body);
    if (!isNew)
    {
        return {HttpStatus::NO_CONTENT, "", "", {}};
    }
    return {HttpStatus::CREATED, "", "", {{"Location", request.path}}};
}

bool JobResource::IsPreconditionMet(ZuRest::Request const& request, JobName const& name)
{
    if (request.ifMatch.empty())
    {
        return true;
    }
    try
    {
        return ZuRest::EntityTag::IsNamed(request.ifMatch, ZuRest::EntityTag::Of(manager.Download(name)));
    }
    catch (Zu::Exception const& exception)
    {
        if (exception.Status() != Zu::Status::NOT_FOUND)
        {
            throw;
        }
        return false; // a missing job matches no tag
    }
}

JobsResources::JobsResources(ZuRest::ResourceRouter& usedRouter, JobManager& usedManager)
    : router(usedRouter),
      manager(usedManager),
      list(manager),
      file(manager),
      load([this](JobName const& name) {
          manager.Load(name);
          return JobReportResource::DocumentOf(manager.Report(name));
      }),
      save([this](JobName const& name) {
          manager.SaveAs(name);
          return nlohmann::json();
      }),
      report(manager)
{
    router.Register("/jobs", list);
    router.Register("/jobs/:name", file);
    router.Register("/jobs/:name/load", load);
    router.Register("/jobs/:name/save", save);
    router.Register("/jobs/:name/report", report);
    changes = manager.ListChangedSignal().Subscribe(
        [this] { list.NotificationEvent().Fire(list, ZuRest::EventType::CHANGED, "/jobs"); });
}

JobsResources::~JobsResources()
{
    changes.End();
    router.Deregister("/jobs", true);
}

} // namespace ZuHost
