#include "Host/Jobs/JobResource.h"

#include "Host/Jobs/JobManager.h"
#include "Host/Jobs/RequestedJob.h"
#include "ZuApi/Exception.h"
#include "ZuRest/Answer.h"
#include "ZuRest/EntityTag.h"
#include "ZuRest/Problem.h"
#include "ZuRest/Request.h"

#include <cctype>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;
using ZuRest::Answer;

namespace
{

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

} // namespace ZuHost
