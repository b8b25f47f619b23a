#include "ZuRest/ResourceRequestProcessor.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuRest/EntityTag.h"
#include "ZuRest/ICallableResource.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/IDocumentResource.h"
#include "ZuRest/IFeedResource.h"
#include "ZuRest/IFormattedResource.h"
#include "ZuRest/IPreviewResource.h"
#include "ZuRest/IPromptResource.h"
#include "ZuRest/IResource.h"
#include "ZuRest/IStreamableResource.h"
#include "ZuRest/IUpdatableResource.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Path.h"
#include "ZuRest/Problem.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/RequestPreferences.h"
#include "ZuRest/StrictBody.h"
#include "wApi/wMutex.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <future>
#include <string_view>
#include <utility>

namespace ZuRest
{

namespace
{

using Json = nlohmann::json;

constexpr char const* HAL = "application/hal+json";
constexpr char const* EVENT_STREAM = "text/event-stream";

bool IsUpdate(std::string const& method)
{
    return method == "PUT" || method == "PATCH";
}

bool IsRead(std::string const& method)
{
    return method == "GET" || method == "HEAD";
}

/// Whether the query asks for the schema.
bool WantsSchema(std::string_view query)
{
    while (!query.empty())
    {
        std::string_view const parameter = query.substr(0, query.find('&'));
        if (parameter == "schema=true")
        {
            return true;
        }
        query.remove_prefix(std::min(parameter.size() + 1, query.size()));
    }
    return false;
}

/// Returns the value of the first parameter "format" of the query.
std::optional<std::string> FormatOf(std::string_view query)
{
    constexpr std::string_view FORMAT = "format=";
    while (!query.empty())
    {
        std::string_view const parameter = query.substr(0, query.find('&'));
        if (parameter.starts_with(FORMAT))
        {
            return Path::Decoded(parameter.substr(FORMAT.size()));
        }
        query.remove_prefix(std::min(parameter.size() + 1, query.size()));
    }
    return std::nullopt;
}

RequestInfo InfoOf(Request const& request, ResourceRouter::Match const& match)
{
    RequestInfo info(request.path, match.keys, WantsSchema(request.query));
    info.query = request.query;
    info.caller = request.caller;
    return info;
}

/// Returns the content interface if it answers this method itself, else null.
IContentResource* ContentFaceFor(IResource& resource, std::string const& method)
{
    auto* const face = dynamic_cast<IContentResource*>(&resource);
    if (face == nullptr)
    {
        return nullptr;
    }
    std::vector<std::string> const known = face->ContentMethods();
    bool const isKnown = std::find(known.begin(), known.end(), method == "HEAD" ? "GET" : method) != known.end();
    return isKnown ? face : nullptr;
}

bool IsUpdatable(ResourceRouter::Match const& match)
{
    auto const* const updatable = dynamic_cast<IUpdatableResource const*>(match.resource);
    return match.isComplete && updatable != nullptr && updatable->IsUpdatable();
}

/// Returns the methods that the resource supports. `isFixed` is true if it has just refused a change of its document.
std::string AllowedBy(ResourceRouter::Match const& match, bool isFixed)
{
    IResource& resource = *match.resource;
    bool const hasDocument = resource.DocumentProvider() != nullptr;
    bool const takesUpdates = hasDocument && !isFixed && IsUpdatable(match);
    auto const has = [&resource](char const* method) { return ContentFaceFor(resource, method) != nullptr; };
    std::string allowed;
    if (hasDocument || resource.StreamableProvider() != nullptr || has("GET"))
    {
        allowed += "GET, HEAD, ";
    }
    if (takesUpdates || has("PUT"))
    {
        allowed += "PUT, ";
    }
    if (takesUpdates || has("PATCH"))
    {
        allowed += "PATCH, ";
    }
    if (resource.CallableProvider() != nullptr || dynamic_cast<IPreviewResource*>(&resource) != nullptr || has("POST"))
    {
        allowed += "POST, ";
    }
    if (has("DELETE"))
    {
        allowed += "DELETE, ";
    }
    return allowed + "OPTIONS";
}

Answer RefuseMethod(Request const& request, ResourceRouter::Match const& match, bool isFixed, std::string detail)
{
    if (detail.empty())
    {
        detail = "The resource at " + request.path + " does not know the method " + request.method + ".";
    }
    Answer answer =
        Problem{HttpStatus::METHOD_NOT_ALLOWED, std::move(detail), Zu::Status::NOT_UPDATABLE, {}}.ToAnswer();
    answer.headers.emplace_back("Allow", AllowedBy(match, isFixed));
    return answer;
}

Answer AsStrict(Answer answer)
{
    answer.headers.emplace_back("Preference-Applied", "handling=strict");
    return answer;
}

/// Returns the path of the document that a change of this resource changes.
std::string SubjectOf(ResourceRouter::Match const& match, Request const& request)
{
    auto const* const subject = dynamic_cast<ISubjectResource const*>(match.resource);
    return subject != nullptr ? subject->SubjectPath(InfoOf(request, match)) : request.path;
}

Answer RefusePrecondition(std::string const& path)
{
    return Problem{HttpStatus::PRECONDITION_FAILED, "The document at " + path + " has changed.", 0, {}}.ToAnswer();
}

/// Returns `answer` with the tag of its body if it is a success, or `HttpStatus::NOT_MODIFIED` if the client has that
/// body.
Answer Tagged(Request const& request, Answer answer)
{
    if (answer.status != HttpStatus::OK)
    {
        return answer;
    }
    std::string tag = EntityTag::Of(answer.body);
    if (IsRead(request.method) && EntityTag::IsNamed(request.ifNoneMatch, tag))
    {
        return {HttpStatus::NOT_MODIFIED, "", "", {{"ETag", std::move(tag)}}};
    }
    answer.headers.emplace_back("ETag", std::move(tag));
    answer.headers.emplace_back("Cache-Control", "no-cache");
    return answer;
}

/// Returns the result of `work`, or the problem document for its exception.
template <typename Work>
ResourceRequestProcessor::Outcome Guarded(Request const& request, Work const& work)
{
    try
    {
        return work();
    }
    catch (...)
    {
        Problem const problem = Problem::OfCaught(request.method, request.path);
        if (problem.status == HttpStatus::INTERNAL_ERROR)
        {
            ZU_LOG_CAUGHT("Request %s %s failed", request.method.c_str(), request.path.c_str());
        }
        return {problem.ToAnswer(), nullptr};
    }
}

} // namespace

ResourceRequestProcessor::ResourceRequestProcessor(ResourceRouter const& usedRouter,
                                                   std::string const& relationTemplate, ScopeMaker newMakeScope,
                                                   std::vector<Place> const& independent)
    : router(usedRouter),
      locks(independent),
      reader(router, locks, relationTemplate),
      makeScope(std::move(newMakeScope)),
      streamLock(std::make_shared<Zu::Mutex>())
{
}

ResourceRequestProcessor::~ResourceRequestProcessor() = default;

void ResourceRequestProcessor::SetUpdateRunner(UpdateRunner runner)
{
    runUpdate = std::move(runner);
}

void ResourceRequestProcessor::SetChangeObserver(ChangeObserver observer)
{
    observeChange = std::move(observer);
}

Json ResourceRequestProcessor::Read(std::string const& path, Json const& /*request*/, std::string const& query)
{
    return reader.ReadFromInside(path, WantsSchema(query));
}

ResourceRequestProcessor::Outcome ResourceRequestProcessor::Process(Request const& request,
                                                                    ReceiverMaker const& makeReceiver)
{
    std::shared_ptr<ResourceLocks::Pass> pass = WaitForTurn(Place::Of(request.path), ModeOf(request));
    return Carry(request, makeReceiver, pass);
}

std::optional<ResourceRequestProcessor::Outcome> ResourceRequestProcessor::ProcessPrompt(Request const& request) const
{
    auto const match = router.Find(request.path);
    if (!IsRead(request.method) || !match.has_value() || dynamic_cast<IPromptResource*>(match->resource) == nullptr)
    {
        return std::nullopt;
    }
    return Guarded(request, [&] { return Outcome{ShowDocument(request, *match), nullptr}; });
}

void ResourceRequestProcessor::ProcessLater(Request request, ReceiverMaker makeReceiver, Runner const& run,
                                            std::function<void(Outcome)> done)
{
    Place const place = Place::Of(request.path);
    ResourceLocks::Mode const mode = ModeOf(request);
    struct Job
    {
        Request request;
        ReceiverMaker makeReceiver;
        std::function<void(Outcome)> done;
        std::shared_ptr<ResourceLocks::Pass> pass;
    };
    auto const job = std::make_shared<Job>(Job{std::move(request), std::move(makeReceiver), std::move(done), nullptr});
    locks.Enter(place, mode, [this, job, run](std::shared_ptr<ResourceLocks::Pass> pass) {
        job->pass = std::move(pass);
        run([this, job] {
            Outcome outcome = Carry(job->request, job->makeReceiver, job->pass);
            job->pass.reset(); // first: the client's next request must find the place free
            job->done(std::move(outcome));
        });
    });
}

std::string ResourceRequestProcessor::MethodsAt(std::string const& path) const
{
    auto const match = router.Find(path);
    return match.has_value() ? AllowedBy(*match, false) : "";
}

void ResourceRequestProcessor::RunAlone(std::vector<std::string> const& heads, std::function<void()> const& work)
{
    auto const pass = WaitForTurn({Place::Of(heads.front()).tree, ""}, ResourceLocks::Mode::CHANGE_TREE);
    for (std::string const& head : heads)
    {
        KeepBefore(Place::Of(head), *pass);
    }
    work();
}

void ResourceRequestProcessor::RunAsChange(std::string const& path, std::function<void()> const& work)
{
    Place const place = Place::Of(path);
    auto const pass = WaitForTurn(place, ResourceLocks::Mode::CHANGE);
    KeepBefore(place, *pass);
    auto const scope = makeScope ? makeScope() : nullptr;
    work();
}

ResourceLocks::Mode ResourceRequestProcessor::ModeOf(Request const& request) const
{
    bool const isChange = IsUpdate(request.method) || request.method == "POST" || request.method == "DELETE";
    if (!isChange)
    {
        return ResourceLocks::Mode::READ;
    }
    if (request.method == "POST")
    {
        auto const match = router.Find(request.path);
        bool const isPreview = match.has_value() && dynamic_cast<IPreviewResource*>(match->resource) != nullptr;
        return isPreview ? ResourceLocks::Mode::READ : ResourceLocks::Mode::CHANGE;
    }
    return ResourceLocks::Mode::CHANGE;
}

std::shared_ptr<ResourceLocks::Pass> ResourceRequestProcessor::WaitForTurn(Place const& place, ResourceLocks::Mode mode)
{
    std::promise<std::shared_ptr<ResourceLocks::Pass>> turn;
    locks.Enter(place, mode, [&turn](std::shared_ptr<ResourceLocks::Pass> pass) { turn.set_value(std::move(pass)); });
    return turn.get_future().get();
}

ResourceRequestProcessor::Outcome ResourceRequestProcessor::Carry(Request const& request,
                                                                  ReceiverMaker const& makeReceiver,
                                                                  std::shared_ptr<ResourceLocks::Pass>& pass)
{
    Turn turn{pass, {}};
    Outcome outcome = Guarded(request, [&] {
        auto const scope = makeScope ? makeScope() : nullptr;
        return Dispatch(request, makeReceiver, turn);
    });
    if (observeChange && ModeOf(request) == ResourceLocks::Mode::CHANGE)
    {
        observeChange({request, outcome.answer, turn.before});
    }
    return outcome;
}

ResourceRequestProcessor::Outcome ResourceRequestProcessor::Dispatch(Request const& request,
                                                                     ReceiverMaker const& makeReceiver, Turn& turn)
{
    if (request.isWanted && !request.isWanted())
    {
        ZU_THROW(Zu::Status::BUSY, "The request was given up before its turn came.");
    }
    if (request.method == "OPTIONS" && request.path == "*") // asks about the service, not about a resource
    {
        return {{HttpStatus::NO_CONTENT, "", "", {{"Allow", "GET, HEAD, PUT, PATCH, POST, DELETE, OPTIONS"}}}, nullptr};
    }
    auto match = router.Find(request.path);
    if (!match.has_value())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no resource at %s.", request.path.c_str());
    }
    return DispatchTo(request, std::move(*match), makeReceiver, turn);
}

ResourceRequestProcessor::Outcome ResourceRequestProcessor::DispatchTo(Request const& request,
                                                                       ResourceRouter::Match match,
                                                                       ReceiverMaker const& makeReceiver, Turn& turn)
{
    IResource& resource = *match.resource;
    if (request.method == "OPTIONS")
    {
        return {{HttpStatus::NO_CONTENT, "", "", {{"Allow", AllowedBy(match, false)}}}, nullptr};
    }
    if (IContentResource* const face = ContentFaceFor(resource, request.method); face != nullptr)
    {
        return {face->AnswerContent(request, InfoOf(request, match)), nullptr};
    }
    if (auto* const feed = dynamic_cast<IFeedResource*>(&resource);
        feed != nullptr && IsRead(request.method) && feed->WantsFeed(request))
    {
        return {feed->AnswerFeed(request, InfoOf(request, match)), nullptr};
    }
    if (IsRead(request.method) && (resource.DocumentProvider() != nullptr || resource.StreamableProvider() != nullptr))
    {
        return Get(request, std::move(match), makeReceiver);
    }
    // A path without the last segment of its route shows a list, which no client changes.
    bool const canChange = (IsUpdate(request.method) && resource.DocumentProvider() != nullptr && match.isComplete) ||
                           (request.method == "POST" && resource.CallableProvider() != nullptr);
    if (canChange)
    {
        return {CarryOutChange(request, match, turn), nullptr};
    }
    if (request.method == "POST" && dynamic_cast<IPreviewResource*>(&resource) != nullptr)
    {
        return {Preview(request, match, turn), nullptr};
    }
    return {RefuseMethod(request, match, false, {}), nullptr};
}

ResourceRequestProcessor::Outcome ResourceRequestProcessor::Get(Request const& request, ResourceRouter::Match match,
                                                                ReceiverMaker const& makeReceiver)
{
    if (auto* const formatted = dynamic_cast<IFormattedResource*>(match.resource); formatted != nullptr)
    {
        if (auto const format = FormatOf(request.query); format.has_value())
        {
            return {Tagged(request, formatted->AnswerFormat(*format, InfoOf(request, match))), nullptr};
        }
    }
    bool const hasDocument = match.resource->DocumentProvider() != nullptr;
    bool const asksForStream = request.accept.find(EVENT_STREAM) != std::string::npos;
    if (match.resource->StreamableProvider() != nullptr && (asksForStream || !hasDocument))
    {
        return Stream(request, std::move(match), makeReceiver);
    }
    return {ShowDocument(request, match), nullptr};
}

ResourceRequestProcessor::Outcome ResourceRequestProcessor::Stream(Request const& request, ResourceRouter::Match match,
                                                                   ReceiverMaker const& makeReceiver)
{
    if (!RequestPreferences::Admits(request.accept, EVENT_STREAM))
    {
        return {Problem{HttpStatus::NOT_ACCEPTABLE,
                        "The resource at " + request.path + " is a stream of the type " + EVENT_STREAM + ".",
                        Zu::Status::NOT_SUPPORTED,
                        {}}
                    .ToAnswer(),
                nullptr};
    }
    Answer const answer{HttpStatus::OK, EVENT_STREAM, "", {{"Cache-Control", "no-cache"}}};
    if (request.method == "HEAD")
    {
        return {answer, nullptr};
    }
    if (!makeReceiver)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "Streams cannot be opened here.");
    }
    bool const isState = match.resource->DocumentProvider() != nullptr;
    RequestInfo const info = InfoOf(request, match);
    return {answer, std::make_unique<OpenStream>(streamLock, std::move(match), makeReceiver(isState), info)};
}

Answer ResourceRequestProcessor::CarryOutChange(Request const& request, ResourceRouter::Match const& match, Turn& turn)
{
    try
    {
        return IsUpdate(request.method) ? Update(request, match, turn) : Call(request, match);
    }
    catch (Zu::Exception const& exception)
    {
        if (exception.Status() != Zu::Status::NOT_UPDATABLE)
        {
            throw;
        }
        std::string detail = Problem::Of(exception, request.method, request.path).detail;
        return RefuseMethod(request, match, IsUpdate(request.method), std::move(detail));
    }
}

Answer ResourceRequestProcessor::Update(Request const& request, ResourceRouter::Match const& match, Turn& turn)
{
    Json const body = JsonText::Read(request.body);
    if (!IsPreconditionMet(request, request.path))
    {
        return RefusePrecondition(request.path);
    }
    bool const isStrict = RequestPreferences::IsStrict(request.prefer) && IsUpdatable(match);
    if (std::string const fault = isStrict ? StrictFault(request, match, body) : std::string(); !fault.empty())
    {
        return AsStrict(Problem{HttpStatus::UNPROCESSABLE_CONTENT, fault, Zu::Status::BAD_ARGUMENT, {}}.ToAnswer());
    }
    KeepBefore(Place::Of(request.path), *turn.pass);
    turn.before = observeChange ? reader.Read(match, request.path, false) : std::string();
    auto const update = [&] { match.resource->DocumentProvider()->UpdateDocument(InfoOf(request, match), body); };
    runUpdate ? runUpdate(request.path, body, update) : update();
    Answer answer = ShowDocument(request, match);
    return isStrict ? AsStrict(std::move(answer)) : answer;
}

/// Returns a sentence on the first member of `body` that the update would ignore or convert; empty if there is none.
std::string ResourceRequestProcessor::StrictFault(Request const& request, ResourceRouter::Match const& match,
                                                  Json const& body) const
{
    constexpr bool WITH_SCHEMA = true;
    return StrictBody::FaultIn(body, Json::parse(reader.Read(match, request.path, WITH_SCHEMA)));
}

Answer ResourceRequestProcessor::Call(Request const& request, ResourceRouter::Match const& match)
{
    Json const body = request.body.empty() ? Json::object() : JsonText::Read(request.body);
    if (std::string const subject = SubjectOf(match, request); !IsPreconditionMet(request, subject))
    {
        return RefusePrecondition(subject);
    }
    Json const result = match.resource->CallableProvider()->Invoke(InfoOf(request, match), body);
    if (result.is_null())
    {
        return {HttpStatus::NO_CONTENT, "", "", {}};
    }
    return {HttpStatus::OK, "application/json", JsonText::Write(result), {}};
}

Answer ResourceRequestProcessor::Preview(Request const& request, ResourceRouter::Match const& match, Turn& turn)
{
    Json const body = request.body.empty() ? Json::object() : JsonText::Read(request.body);
    std::string const subject = SubjectOf(match, request);
    if (!IsPreconditionMet(request, subject))
    {
        return RefusePrecondition(subject);
    }
    // The tag comes first: a change between the two steps makes the tag old, and a change with it is refused.
    std::string const tag = EntityTag::Of(reader.Read(subject, false));
    auto const makeAnswer = dynamic_cast<IPreviewResource&>(*match.resource).Preview(InfoOf(request, match), body, tag);
    turn.pass.reset();
    return makeAnswer();
}

Answer ResourceRequestProcessor::ShowDocument(Request const& request, ResourceRouter::Match const& match) const
{
    std::string body = reader.Read(match, request.path, WantsSchema(request.query), request.query);
    return Tagged(request, {HttpStatus::OK, HAL, std::move(body), {}});
}

bool ResourceRequestProcessor::IsPreconditionMet(Request const& request, std::string const& subjectPath) const
{
    if (request.ifMatch.empty())
    {
        return true;
    }
    auto const match = router.Find(subjectPath);
    if (!match.has_value() || match->resource->DocumentProvider() == nullptr)
    {
        return false; // no document, so no state of it
    }
    auto const isNamed = [&](bool wantsSchema) {
        std::string const body = reader.Read(subjectPath, wantsSchema);
        return EntityTag::IsNamed(request.ifMatch, EntityTag::Of(body));
    };
    return isNamed(false) || isNamed(true); // the client may have read the document with or without the schema
}

void ResourceRequestProcessor::KeepBefore(Place const& place, ResourceLocks::Pass& pass) const
{
    try
    {
        pass.ShowBeforeAt(place, std::make_shared<Json const>(reader.ReadTree(place.HeadPath())));
    }
    catch (...) // no such document: reads wait for the end of the change
    {
    }
}

} // namespace ZuRest
