#include "Host/Security/Accounts.h"

#include "Host/Audit/ITrail.h"
#include "Host/Http/ClientSource.h"
#include "Host/Security/PasswordHasher.h"
#include "Host/Security/PasswordRules.h"
#include "Host/Security/SetupCode.h"
#include "Host/Security/UtcTime.h"
#include "Host/Security/WordList.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuRest/Caller.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace ZuHost
{

using Json = nlohmann::json;
using ZuCommon::Role;
using ZuRest::Caller;

namespace
{

constexpr char const* DONE = "done";
constexpr char const* TOO_SOON = "refused: too many attempts";

/// The address in the text "https 192.0.2.7", as it counts for limits.
std::string AddressOf(Caller const& caller)
{
    std::string const text = caller.source.substr(caller.source.rfind(' ') + 1);
    boost::system::error_code error;
    auto const address = boost::asio::ip::make_address(text, error);
    return error ? text : ClientSource(address).to_string();
}

std::optional<UserName> NameOf(std::string const& text)
{
    try
    {
        return UserName(text);
    }
    catch (Zu::Exception const&)
    {
        return std::nullopt;
    }
}

/// The password as it is compared. A text that cannot be a password becomes the empty text, which no user has.
std::string PreparedOrEmpty(std::string const& password)
{
    try
    {
        return PasswordRules::Prepared(password);
    }
    catch (Zu::Exception const&)
    {
        return {};
    }
}

/// A user as the trail shows it.
std::string Shown(std::optional<User> const& user)
{
    if (!user.has_value())
    {
        return {};
    }
    return Json{{"name", user->name.Text()}, {"role", ZuCommon::RoleName(user->role)}, {"enabled", user->isEnabled}}
        .dump();
}

std::string Shown(UserName const& name, Accounts::Change const& change)
{
    Json document{{"name", name.Text()}};
    if (change.role.has_value())
    {
        document["role"] = ZuCommon::RoleName(*change.role);
    }
    if (change.isEnabled.has_value())
    {
        document["enabled"] = *change.isEnabled;
    }
    if (change.password.has_value())
    {
        document["hasNewPassword"] = true;
    }
    return document.dump();
}

} // namespace

Accounts::Accounts(Parts newParts, Sessions::Clock newClock) : parts(std::move(newParts)), clock(std::move(newClock))
{
}

Accounts::~Accounts() = default;

Accounts::Login Accounts::LogIn(Caller const& caller, std::string const& name, std::string const& password)
{
    std::optional<UserName> const userName = NameOf(name);
    std::optional<User> const user = userName.has_value() ? parts.users.Find(*userName) : std::nullopt;
    Caller known = caller;
    // A text that is no user's name is not noted: people type passwords into the wrong field.
    known.name = user.has_value() ? "user " + user->name.Text() : "unknown user";
    Verdict const verdict = CheckPassword(known, user, userName.has_value() ? userName->Key() : "", password);
    if (!verdict.isRight)
    {
        Note(known, "login", verdict.waitUsec != 0 ? TOO_SOON : "refused: wrong name or password");
        return {verdict, std::nullopt};
    }
    Sessions::Opened opened = parts.sessions.Open(user->name, user->role, caller.source);
    std::optional<User> const present = parts.users.Find(user->name);
    if (!present.has_value() || present->hash != user->hash || present->role != user->role || !present->isEnabled)
    {
        parts.sessions.End(opened.session.id);
        Note(known, "login", "refused: the user has been changed meanwhile");
        return {Verdict{}, std::nullopt};
    }
    Note(known, "login", DONE);
    try
    {
        parts.users.NoteLogin(user->name, UtcTime::Text(UtcTime::Now()));
    }
    catch (...) // a full disk keeps nobody out
    {
        ZU_LOG_WARNING("The time of a login cannot be stored: %s", Zu::CaughtReason().c_str());
    }
    return {verdict, std::move(opened)};
}

void Accounts::LogOut(Caller const& caller)
{
    if (caller.sessionId.empty())
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "This request belongs to no session.");
    }
    parts.sessions.End(caller.sessionId);
    Note(caller, "logout", DONE);
}

void Accounts::EndSession(Caller const& caller, std::string const& id)
{
    for (Sessions::Session const& session : SessionsFor(caller))
    {
        if (session.id == id && parts.sessions.End(id))
        {
            Note(caller, "end session", DONE, Json{{"session", id}, {"user", session.user.Text()}}.dump());
            return;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no such session.");
}

std::vector<Sessions::Session> Accounts::SessionsFor(Caller const& caller) const
{
    std::vector<Sessions::Session> list = parts.sessions.List();
    if (caller.role != Role::ADMINISTRATOR)
    {
        std::optional<UserName> const own = UserOf(caller);
        std::erase_if(list, [&](Sessions::Session const& session) { return session.user != own; });
    }
    return list;
}

uint64 Accounts::NowUsec() const
{
    return clock();
}

std::optional<UserName> Accounts::UserOf(Caller const& caller) const
{
    auto const session = parts.sessions.Get(caller.sessionId);
    return session.has_value() ? std::optional(session->user) : std::nullopt;
}

std::vector<User> Accounts::UsersFor(Caller const& caller) const
{
    std::vector<User> list = parts.users.List();
    if (caller.role != Role::ADMINISTRATOR)
    {
        std::optional<UserName> const own = UserOf(caller);
        std::erase_if(list, [&](User const& user) { return user.name != own; });
    }
    return list;
}

void Accounts::AddUser(Caller const& caller, UserName const& name, Role role, std::string const& password)
{
    std::string const after = Shown(User{name, role, true, "", "", ""});
    Carry(caller, "add user", name, after, [&] {
        parts.users.Add({name, role, true, HashOf(name, password), UtcTime::Text(UtcTime::Now()), ""});
        return DONE;
    });
}

Accounts::Verdict Accounts::ChangeUser(Caller const& caller, UserName const& name, Change const& change)
{
    Verdict verdict{true, 0};
    Carry(caller, "change user", name, Shown(name, change), [&] {
        bool const isOwn = UserOf(caller) == name;
        bool const isPasswordAlone = !change.role.has_value() && !change.isEnabled.has_value();
        if (caller.role != Role::ADMINISTRATOR && (!isOwn || !isPasswordAlone))
        {
            ZU_THROW(Zu::Status::WRITE_ONLY_REFUSED, "Only an administrator changes other users, roles and rights.");
        }
        if (isOwn && change.password.has_value())
        {
            verdict = CheckPassword(caller, parts.users.Find(name), name.Key(), change.oldPassword);
        }
        if (!verdict.isRight)
        {
            return verdict.waitUsec != 0 ? TOO_SOON : "refused: wrong old password";
        }
        UserStore::Change stored{change.role, change.isEnabled, std::nullopt};
        if (change.password.has_value())
        {
            stored.hash = HashOf(name, *change.password);
        }
        parts.users.Update(name, stored);
        parts.sessions.EndOf(name);
        return DONE;
    });
    return verdict;
}

void Accounts::RemoveUser(Caller const& caller, UserName const& name)
{
    Carry(caller, "remove user", name, "", [&] {
        parts.users.Remove(name);
        parts.sessions.EndOf(name);
        return DONE;
    });
}

Accounts::Verdict Accounts::SetUp(Caller const& caller, std::string const& code, std::string const& name,
                                  std::string const& password)
{
    if (!parts.setupCode.IsOffered())
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "There is no code, or it has ended: start the host with "
                                          "--reset-administrator for a new one.");
    }
    std::string const key = "one-time code of " + AddressOf(caller); // strangers elsewhere hold nobody up
    uint64 const waitUsec = brake.Begin(key, key, clock());
    if (waitUsec != 0 || !parts.setupCode.Matches(code))
    {
        Note(caller, "first administrator", waitUsec != 0 ? TOO_SOON : "refused: wrong code");
        return {false, waitUsec};
    }
    brake.Cancel(key, key, clock());
    UserName const userName(name);
    parts.users.PutAdministrator(
        {userName, Role::ADMINISTRATOR, true, HashOf(userName, password), UtcTime::Text(UtcTime::Now()), ""});
    parts.setupCode.Spend();
    parts.sessions.EndOf(userName);
    Note(caller, "first administrator", DONE, "", Shown(parts.users.Find(userName)));
    return {true, 0};
}

void Accounts::NoteRefusal(Caller const& caller, char const* what, std::string const& name, std::string const& reason)
{
    std::string const after =
        name.empty() ? "" : Json{{"name", name}}.dump(-1, ' ', false, Json::error_handler_t::replace);
    Note(caller, what, "refused: " + reason, "", after);
}

/// `key` names the user in the brake, also if there is no such user.
Accounts::Verdict Accounts::CheckPassword(Caller const& caller, std::optional<User> const& user, std::string const& key,
                                          std::string const& password)
{
    std::string const address = AddressOf(caller);
    if (uint64 const waitUsec = brake.Begin(key, address, clock()); waitUsec != 0)
    {
        return {false, waitUsec};
    }
    bool const mayLogIn = user.has_value() && user->isEnabled;
    try
    {
        if (parts.hasher.Verify(mayLogIn ? user->hash : "", PreparedOrEmpty(password)))
        {
            brake.Succeed(key, address, clock());
            return {true, 0};
        }
        return {false, 0};
    }
    catch (...) // nothing was checked
    {
        brake.Cancel(key, address, clock());
        throw;
    }
}

/// Checks a new password and returns its hash.
std::string Accounts::HashOf(UserName const& name, std::string const& password)
{
    if (!parts.words.Exists())
    {
        ZU_LOG_WARNING("There is no dictionary at %s, so a new password is not compared with it",
                       parts.words.Path().c_str());
    }
    std::string const prepared = PasswordRules::Prepared(password);
    if (std::string const fault = PasswordRules::FaultOf(prepared, name, parts.words); !fault.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s", fault.c_str());
    }
    return parts.hasher.Hash(prepared);
}

/// A request may have waited for its turn while an administrator took the sender's rights away.
void Accounts::CheckCurrent(Caller const& caller) const
{
    if (!parts.isCurrent(caller))
    {
        ZU_THROW(Zu::Status::WRITE_ONLY_REFUSED, "The rights of this request have ended: log in again.");
    }
}

void Accounts::Note(Caller const& caller, std::string what, std::string result, std::string before, std::string after)
{
    parts.trail.Note(
        {caller.name, caller.source, std::move(what), std::move(before), std::move(after), std::move(result)});
}

/// Makes a change of a user and notes its result.
void Accounts::Carry(Caller const& caller, char const* what, UserName const& name, std::string const& after,
                     Work const& change)
{
    std::string const before = Shown(parts.users.Find(name));
    try
    {
        CheckCurrent(caller);
        Note(caller, what, change(), before, after);
    }
    catch (...)
    {
        Note(caller, what, "refused: " + Zu::CaughtReason(), before, after);
        throw;
    }
}

} // namespace ZuHost
