#include "Host/Security/Gatekeeper.h"

#include "Host/Audit/ITrail.h"
#include "Host/Http/HttpServer.h"
#include "Host/Security/ICallerSource.h"
#include "Host/Security/TokenFile.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuRest/Caller.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Path.h"
#include "ZuRest/Problem.h"
#include "wApi/wTime.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;
using ZuCommon::Role;

namespace
{

constexpr char const* NO_CALLER = "This service asks for a token: send the header Authorization: Bearer TOKEN.";

Admission Refuse(uint32 status, int32 code, std::string detail)
{
    Admission admission;
    admission.refusal = ZuRest::Problem{status, std::move(detail), code, {}}.ToAnswer();
    return admission;
}

Admission Forbid(std::string detail)
{
    return Refuse(HttpStatus::FORBIDDEN, Zu::Status::WRITE_ONLY_REFUSED, std::move(detail));
}

/// Whether a query has a member that clients of other services put tokens into.
bool HasToken(std::string_view query)
{
    while (!query.empty())
    {
        std::string_view const member = query.substr(0, query.find('&'));
        std::string const key = ZuRest::Path::Decoded(member.substr(0, member.find('=')));
        if (key == "token" || key == "access_token")
        {
            return true;
        }
        query.remove_prefix(std::min(member.size() + 1, query.size()));
    }
    return false;
}

/// The name of a caller as sentences show it: "token 'line 4'".
std::string Quoted(std::string const& name)
{
    std::size_t const blank = name.find(' ');
    bool const hasName = blank != std::string::npos && name != TokenFile::CALLER;
    return hasName ? name.substr(0, blank + 1) + "'" + name.substr(blank + 1) + "'" : name;
}

std::string SourceOf(Credentials const& credentials)
{
    return (credentials.isEncrypted ? "https " : "http ") + credentials.source.to_string();
}

/// Whether a list like "GET, HEAD, OPTIONS" has this member.
bool IsIn(std::string const& list, std::string const& member)
{
    return (", " + list + ", ").find(", " + member + ", ") != std::string::npos;
}

Admission AdmitAs(KnownCaller const& known, Credentials const& credentials, uint64 maxBodyBytes)
{
    Admission admission;
    admission.caller = std::make_shared<ZuRest::Caller const>(
        ZuRest::Caller{known.role, known.name, SourceOf(credentials), known.sessionId, credentials.isEncrypted});
    admission.maxBodyBytes = maxBodyBytes;
    return admission;
}

} // namespace

Gatekeeper::Gatekeeper(std::vector<ICallerSource*> newSources, ITrail& usedTrail, MethodFinder newFindMethods)
    : sources(std::move(newSources)), notes(usedTrail, &wTime_NowUsec), findMethods(std::move(newFindMethods))
{
}

Gatekeeper::~Gatekeeper() = default;

void Gatekeeper::SetBeyondLoopback(bool isBeyond) noexcept
{
    isBeyondLoopback = isBeyond;
}

void Gatekeeper::SetLoginNotice(std::string text)
{
    loginNotice = std::move(text);
}

Admission Gatekeeper::Admit(Credentials const& credentials)
{
    if (HasToken(credentials.query))
    {
        return Refuse(
            HttpStatus::BAD_REQUEST, Zu::Status::BAD_ARGUMENT,
            "A token in an address can be read in logs: send the header Authorization: Bearer TOKEN. This token "
            "should be replaced.");
    }
    Proof const proof = Identify(credentials);
    Admission admission = Judge(credentials, proof);
    if (admission.caller == nullptr)
    {
        NoteRefusal(credentials, proof, admission.refusal.status);
    }
    return admission;
}

bool Gatekeeper::IsCurrent(ZuRest::Caller const& caller) const noexcept
{
    if (caller.name == LOCAL_CALLER)
    {
        return IsOpen();
    }
    return std::ranges::any_of(sources, [&](ICallerSource const* source) { return source->IsCurrent(caller); });
}

Zu::Signal<>& Gatekeeper::EndedSignal() noexcept
{
    return endedSignal;
}

bool Gatekeeper::IsOpen() const noexcept
{
    return !isBeyondLoopback && !HasCallers();
}

bool Gatekeeper::HasCallers() const noexcept
{
    return std::ranges::any_of(sources, [](ICallerSource const* source) { return source->HasCallers(); });
}

/// The proof of the first source that knows the caller. A secret that some source takes for wrong may be right for the
/// next one.
Proof Gatekeeper::Identify(Credentials const& credentials) const
{
    if (IsOpen())
    {
        return {KnownCaller{Role::ADMINISTRATOR, LOCAL_CALLER, ""}, "", false};
    }
    Proof result;
    for (ICallerSource* const source : sources)
    {
        Proof proof = source->Find(credentials);
        if (proof.caller.has_value())
        {
            return proof;
        }
        result.isWrongSecret = result.isWrongSecret || proof.isWrongSecret;
    }
    return result;
}

Admission Gatekeeper::AskForLogin() const
{
    Admission admission = Refuse(HttpStatus::UNAUTHORIZED, Zu::Status::WRITE_ONLY_REFUSED, NO_CALLER);
    if (!loginNotice.empty())
    {
        nlohmann::json document = nlohmann::json::parse(admission.refusal.body);
        document["notice"] = loginNotice;
        admission.refusal.body = ZuRest::JsonText::Write(document);
    }
    admission.refusal.headers.emplace_back("WWW-Authenticate", "Bearer");
    return admission;
}

Admission Gatekeeper::Judge(Credentials const& credentials, Proof const& proof) const
{
    RouteTable::Route const* const route = RouteTable::Find(credentials.method, credentials.path);
    if (route != nullptr && route->role == Role::NONE)
    {
        bool const isRead = credentials.method == "GET" || credentials.method == "HEAD";
        return AdmitAs(proof.refusal.empty() ? proof.caller.value_or(KnownCaller{}) : KnownCaller{}, credentials,
                       isRead ? 0 : MAX_OPEN_BODY_BYTES);
    }
    if (!proof.caller.has_value())
    {
        Admission admission = AskForLogin();
        admission.isWrongSecret = proof.isWrongSecret;
        return admission;
    }
    if (!proof.refusal.empty())
    {
        return Forbid(proof.refusal);
    }
    KnownCaller const& caller = *proof.caller;
    if (route == nullptr)
    {
        return JudgeWithoutRoute(credentials, caller);
    }
    if (caller.role < route->role)
    {
        return Forbid(std::string("This needs the role ") + ZuCommon::RoleName(route->role) + "; " +
                      Quoted(caller.name) + " has the role " + ZuCommon::RoleName(caller.role) + ".");
    }
    return AdmitAs(caller, credentials, HttpServer::MAX_BODY_BYTES);
}

/// A request that the table does not name: OPTIONS, a method that the resource does not know, or a path where there is
/// nothing. A resource or method that was forgotten in the table is denied.
Admission Gatekeeper::JudgeWithoutRoute(Credentials const& credentials, KnownCaller const& caller) const
{
    std::string const path(credentials.path);
    std::string const method(credentials.method);
    std::string methods = findMethods(path);
    bool const isInTable = RouteTable::HasPath(path);
    if (methods.empty() || (isInTable && method == "OPTIONS"))
    {
        return AdmitAs(caller, credentials, HttpServer::MAX_BODY_BYTES);
    }
    if (!isInTable || IsIn(methods, method))
    {
        ZU_LOG_ERROR("The table of routes does not name %s %s, so nobody has access", method.c_str(), path.c_str());
        return Forbid("The table of routes does not name " + method + ' ' + path + ", so nobody has access.");
    }
    Admission admission = Refuse(HttpStatus::METHOD_NOT_ALLOWED, Zu::Status::NOT_UPDATABLE,
                                 "The resource at " + path + " does not know the method " + method + ".");
    admission.refusal.headers.emplace_back("Allow", std::move(methods));
    return admission;
}

void Gatekeeper::NoteRefusal(Credentials const& credentials, Proof const& proof, uint32 status)
{
    if (status != HttpStatus::UNAUTHORIZED && status != HttpStatus::FORBIDDEN)
    {
        return;
    }
    notes.Note({proof.caller.has_value() ? proof.caller->name : "", SourceOf(credentials),
                std::string(credentials.method) + ' ' + std::string(credentials.path), "", "", std::to_string(status)});
}

} // namespace ZuHost
