#include "Host/Security/AccountResources.h"

#include "Host/Security/Accounts.h"
#include "Host/Security/BodyMembers.h"
#include "ZuApi/Exception.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Caller.h"
#include "ZuRest/EntityTag.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Path.h"
#include "ZuRest/Problem.h"
#include "ZuRest/Request.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResourceRouter.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;
using Json = nlohmann::json;
using ZuRest::Answer;
using ZuRest::Caller;
using ZuRest::Request;
using ZuRest::RequestInfo;

namespace
{

constexpr char const* HAL = "application/hal+json";

// Changes as the trail names them.
constexpr char const* ADD = "add user";
constexpr char const* CHANGE = "change user";
constexpr char const* REMOVE = "remove user";

constexpr uint64 USEC_PER_SECOND = 1'000'000;
Answer const NO_CONTENT{HttpStatus::NO_CONTENT, "", "", {}};

Caller const& CallerOf(Request const& request)
{
    static Caller const NOBODY;
    return request.caller != nullptr ? *request.caller : NOBODY;
}

/// The last segment of the path.
std::string const& KeyOf(RequestInfo const& info, char const* key)
{
    std::string const* const value = info.FindKey(key);
    if (value == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no resource at %s.", info.path.c_str());
    }
    return *value;
}

Answer Refuse(uint32 status, std::string detail)
{
    return ZuRest::Problem{status, std::move(detail), Zu::Status::WRITE_ONLY_REFUSED, {}}.ToAnswer();
}

/// The answer to an attempt that must wait.
Answer RefuseForNow(uint64 waitUsec)
{
    std::string const seconds = std::to_string((waitUsec + USEC_PER_SECOND - 1) / USEC_PER_SECOND);
    Answer answer = ZuRest::Problem{
        HttpStatus::TOO_MANY_REQUESTS,
        "Too many attempts have failed: the next one may be made in " + seconds + " seconds.",
        Zu::Status::BUSY,
        {}}.ToAnswer();
    answer.headers.emplace_back("Retry-After", seconds);
    return answer;
}

Answer RefusalOf(Accounts::Verdict const& verdict, uint32 status, char const* detail)
{
    return verdict.waitUsec != 0 ? RefuseForNow(verdict.waitUsec) : Refuse(status, detail);
}

/// The document with the link to itself, as text.
std::string TextOf(std::string const& path, Json document)
{
    document["_links"]["self"] = {{"href", path}};
    return ZuRest::JsonText::Write(document);
}

Answer Show(Request const& request, std::string text)
{
    std::string tag = ZuRest::EntityTag::Of(text);
    if (ZuRest::EntityTag::IsNamed(request.ifNoneMatch, tag))
    {
        return {HttpStatus::NOT_MODIFIED, "", "", {{"ETag", std::move(tag)}}};
    }
    return {HttpStatus::OK, HAL, std::move(text), {{"ETag", std::move(tag)}, {"Cache-Control", "no-store"}}};
}

Json ToJson(Sessions::Session const& session, Caller const& caller, uint64 nowUsec)
{
    return {{"id", session.id},
            {"user", session.user.Text()},
            {"role", ZuCommon::RoleName(session.role)},
            {"source", session.source},
            {"isOwn", session.id == caller.sessionId},
            {"idleLeftSec", session.IdleLeftUsec(nowUsec) / USEC_PER_SECOND},
            {"lifeLeftSec", session.LifeLeftUsec(nowUsec) / USEC_PER_SECOND}};
}

Json ToJson(User const& user)
{
    return {{"name", user.name.Text()},
            {"role", ZuCommon::RoleName(user.role)},
            {"enabled", user.isEnabled},
            {"created", user.created},
            {"lastLogin", user.lastLogin.empty() ? Json() : Json(user.lastLogin)}};
}

std::string PathOf(User const& user)
{
    return ZuRest::Path::Format("/users/:name", {user.name.Text()});
}

std::string TextOf(User const& user)
{
    return TextOf(PathOf(user), ToJson(user));
}

/// Throws `Zu::Status::NOT_FOUND` for a user that the caller may not see.
User FindUser(Accounts const& accounts, Caller const& caller, UserName const& name)
{
    for (User& user : accounts.UsersFor(caller))
    {
        if (user.name == name)
        {
            return std::move(user);
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no user '%s'.", name.Text().c_str());
}

ZuCommon::Role RoleIn(std::string const& name)
{
    auto const role = ZuCommon::RoleOfName(name);
    if (!role.has_value())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "The member 'role' of the body is viewer, operator, engineer or administrator.");
    }
    return *role;
}

/// Runs the first steps of a change, which come before the entry that `Accounts` makes. A refusal gets an entry here.
template <typename Steps>
auto Checked(Accounts& accounts, Request const& request, char const* what, std::string const& name, Steps const& steps)
{
    try
    {
        return steps();
    }
    catch (...)
    {
        accounts.NoteRefusal(CallerOf(request), what, name, Zu::CaughtReason());
        throw;
    }
}

/// The refusal of a change that was made for another state of the user; nothing if the change may be made.
std::optional<Answer> RefusalOfStale(Accounts& accounts, Request const& request, User const& user, char const* what)
{
    if (request.ifMatch.empty() || ZuRest::EntityTag::IsNamed(request.ifMatch, ZuRest::EntityTag::Of(TextOf(user))))
    {
        return std::nullopt;
    }
    std::string const reason = "The user at " + request.path + " has changed.";
    accounts.NoteRefusal(CallerOf(request), what, user.name.Text(), reason);
    return ZuRest::Problem{HttpStatus::PRECONDITION_FAILED, reason, 0, {}}.ToAnswer();
}

struct NewUser
{
    UserName name;
    ZuCommon::Role role;
    std::string password;
};

NewUser NewUserIn(std::string const& text)
{
    BodyMembers body(text);
    UserName const name(body.Text("name"));
    ZuCommon::Role const role = RoleIn(body.Text("role"));
    std::string const password = body.Text("password");
    body.CheckAllKnown();
    return {name, role, password};
}

Accounts::Change ChangeIn(std::string const& text)
{
    BodyMembers body(text);
    Accounts::Change change;
    if (auto const role = body.OptionalText("role"); role.has_value())
    {
        change.role = RoleIn(*role);
    }
    change.isEnabled = body.OptionalFlag("enabled");
    change.password = body.OptionalText("password");
    change.oldPassword = body.OptionalText("oldPassword").value_or("");
    body.CheckAllKnown();
    return change;
}

/// The value of Set-Cookie. The attributes are those that the prefix of the name asks for.
std::string CookieOf(std::string const& secret, char const* more)
{
    return std::string(Sessions::COOKIE) + '=' + secret + "; Path=/; Secure; HttpOnly; SameSite=Strict" + more;
}

} // namespace

MethodsResource::MethodsResource(Methods newMethods) : methods(std::move(newMethods))
{
}

MethodsResource::~MethodsResource() = default;

std::vector<std::string> MethodsResource::ContentMethods() const
{
    std::vector<std::string> names;
    for (auto const& [name, method] : methods)
    {
        names.push_back(name);
    }
    return names;
}

Answer MethodsResource::AnswerContent(Request const& request, RequestInfo const& info)
{
    return methods.at(request.method == "HEAD" ? "GET" : request.method)(request, info);
}

AccountResources::AccountResources(ZuRest::ResourceRouter& usedRouter, Accounts& usedAccounts)
    : router(usedRouter),
      accounts(usedAccounts),
      session({{"GET", [this](Request const& request, Info const&) { return ShowSession(request); }},
               {"POST", [this](Request const& request, Info const&) { return LogIn(request); }},
               {"DELETE", [this](Request const& request, Info const&) { return LogOut(request); }}}),
      sessionList({{"GET", [this](Request const& request, Info const&) { return ListSessions(request); }}}),
      oneSession({{"GET", [this](Request const& request, Info const& info) { return ShowOneSession(request, info); }},
                  {"DELETE", [this](Request const& request, Info const& info) { return EndSession(request, info); }}}),
      userList({{"GET", [this](Request const& request, Info const&) { return ListUsers(request); }},
                {"POST", [this](Request const& request, Info const&) { return AddUser(request); }}}),
      oneUser({{"GET", [this](Request const& request, Info const& info) { return ShowUser(request, info); }},
               {"PATCH", [this](Request const& request, Info const& info) { return ChangeUser(request, info); }},
               {"DELETE", [this](Request const& request, Info const& info) { return RemoveUser(request, info); }}}),
      setup({{"POST", [this](Request const& request, Info const&) { return SetUp(request); }}})
{
    router.Register("/session", session);
    router.Register("/sessions", sessionList);
    router.Register("/sessions/:id", oneSession);
    router.Register("/users", userList);
    router.Register("/users/:name", oneUser);
    router.Register("/setup", setup);
}

AccountResources::~AccountResources()
{
    for (char const* const route : {"/setup", "/users", "/sessions", "/session"})
    {
        router.Deregister(route, true);
    }
}

/// The caller itself: the role, and for a session its ends and its token against cross-site requests.
Answer AccountResources::ShowSession(Request const& request) const
{
    Caller const& caller = CallerOf(request);
    Json document{{"caller", caller.name}, {"role", ZuCommon::RoleName(caller.role)}};
    for (Sessions::Session const& one : accounts.SessionsFor(caller))
    {
        if (one.id == caller.sessionId)
        {
            document.update(ToJson(one, caller, accounts.NowUsec()));
            document["crossSiteToken"] = one.crossSiteToken;
        }
    }
    return Show(request, TextOf("/session", std::move(document)));
}

Answer AccountResources::LogIn(Request const& request)
{
    BodyMembers body(request.body);
    std::string const name = body.Text("name");
    std::string const password = body.Text("password");
    body.CheckAllKnown();
    Accounts::Login const login = accounts.LogIn(CallerOf(request), name, password);
    if (!login.opened.has_value())
    {
        Answer answer = RefusalOf(login.verdict, HttpStatus::UNAUTHORIZED, "The name or the password is wrong.");
        answer.headers.emplace_back("WWW-Authenticate", "Bearer");
        return answer;
    }
    Sessions::Session const& opened = login.opened->session;
    Caller caller = CallerOf(request);
    caller.sessionId = opened.id;
    Json document = ToJson(opened, caller, accounts.NowUsec());
    document["caller"] = "user " + opened.user.Text();
    document["crossSiteToken"] = opened.crossSiteToken;
    return {HttpStatus::OK,
            HAL,
            TextOf("/session", std::move(document)),
            {{"Cache-Control", "no-store"}, {"Set-Cookie", CookieOf(login.opened->secret, "")}}};
}

Answer AccountResources::LogOut(Request const& request)
{
    accounts.LogOut(CallerOf(request));
    Answer answer = NO_CONTENT;
    answer.headers.emplace_back("Set-Cookie", CookieOf("", "; Max-Age=0"));
    return answer;
}

Answer AccountResources::ListSessions(Request const& request) const
{
    Json document{{"sessions", Json::array()}};
    for (Sessions::Session const& one : accounts.SessionsFor(CallerOf(request)))
    {
        document["sessions"].push_back(ToJson(one, CallerOf(request), accounts.NowUsec()));
        document["_links"]["item"].push_back({{"href", "/sessions/" + one.id}, {"title", one.user.Text()}});
    }
    return Show(request, TextOf("/sessions", std::move(document)));
}

Answer AccountResources::ShowOneSession(Request const& request, Info const& info) const
{
    std::string const& id = KeyOf(info, "id");
    for (Sessions::Session const& one : accounts.SessionsFor(CallerOf(request)))
    {
        if (one.id == id)
        {
            return Show(request, TextOf("/sessions/" + id, ToJson(one, CallerOf(request), accounts.NowUsec())));
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no such session.");
}

Answer AccountResources::EndSession(Request const& request, Info const& info)
{
    accounts.EndSession(CallerOf(request), KeyOf(info, "id"));
    return NO_CONTENT;
}

Answer AccountResources::ListUsers(Request const& request) const
{
    Json document{{"users", Json::array()}};
    for (User const& user : accounts.UsersFor(CallerOf(request)))
    {
        document["users"].push_back(ToJson(user));
        document["_links"]["item"].push_back({{"href", PathOf(user)}, {"title", user.name.Text()}});
    }
    return Show(request, TextOf("/users", std::move(document)));
}

Answer AccountResources::AddUser(Request const& request)
{
    NewUser const user = Checked(accounts, request, ADD, "", [&] { return NewUserIn(request.body); });
    accounts.AddUser(CallerOf(request), user.name, user.role, user.password);
    return {HttpStatus::CREATED, "", "", {{"Location", ZuRest::Path::Format("/users/:name", {user.name.Text()})}}};
}

Answer AccountResources::ShowUser(Request const& request, Info const& info) const
{
    return Show(request, TextOf(FindUser(accounts, CallerOf(request), UserName(KeyOf(info, "name")))));
}

Answer AccountResources::ChangeUser(Request const& request, Info const& info)
{
    std::string const& key = KeyOf(info, "name");
    User const user =
        Checked(accounts, request, CHANGE, key, [&] { return FindUser(accounts, CallerOf(request), UserName(key)); });
    Accounts::Change const change = Checked(accounts, request, CHANGE, key, [&] { return ChangeIn(request.body); });
    if (std::optional<Answer> refusal = RefusalOfStale(accounts, request, user, CHANGE); refusal.has_value())
    {
        return std::move(*refusal);
    }
    Accounts::Verdict const verdict = accounts.ChangeUser(CallerOf(request), user.name, change);
    return verdict.isRight ? NO_CONTENT : RefusalOf(verdict, HttpStatus::FORBIDDEN, "The old password is wrong.");
}

Answer AccountResources::RemoveUser(Request const& request, Info const& info)
{
    std::string const& key = KeyOf(info, "name");
    User const user =
        Checked(accounts, request, REMOVE, key, [&] { return FindUser(accounts, CallerOf(request), UserName(key)); });
    if (std::optional<Answer> refusal = RefusalOfStale(accounts, request, user, REMOVE); refusal.has_value())
    {
        return std::move(*refusal);
    }
    accounts.RemoveUser(CallerOf(request), user.name);
    return NO_CONTENT;
}

Answer AccountResources::SetUp(Request const& request)
{
    BodyMembers body(request.body);
    std::string const code = body.Text("code");
    std::string const name = body.Text("name");
    std::string const password = body.Text("password");
    body.CheckAllKnown();
    Accounts::Verdict const verdict = Checked(accounts, request, "first administrator", "", [&] {
        return accounts.SetUp(CallerOf(request), code, name, password); // its exceptions are not noted
    });
    if (!verdict.isRight)
    {
        return RefusalOf(verdict, HttpStatus::FORBIDDEN, "The code is wrong.");
    }
    std::string location = ZuRest::Path::Format("/users/:name", {UserName(name).Text()});
    return {HttpStatus::CREATED, "", "", {{"Location", std::move(location)}}};
}

} // namespace ZuHost
