#include "Host/Security/Sessions.h"

#include "Host/Http/IGatekeeper.h"
#include "Host/Security/Randomness.h"
#include "Host/Security/UserStore.h"
#include "ZuRest/Caller.h"

#include <algorithm>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr std::size_t ID_CHARACTERS = 12;
constexpr std::string_view ID_ALPHABET = "abcdefghijklmnopqrstuvwxyz0123456789";

/// Takes the next `name=value` from the value of a Cookie header.
std::string_view TakeCookie(std::string_view& header)
{
    constexpr char const* BLANKS = " \t";
    std::size_t const end = std::min(header.find(';'), header.size());
    std::string_view const cookie = header.substr(0, end);
    header.remove_prefix(std::min(end + 1, header.size()));
    std::size_t const first = std::min(cookie.find_first_not_of(BLANKS), cookie.size());
    return cookie.substr(first, cookie.find_last_not_of(BLANKS) + 1 - first);
}

/// The values of the cookies that have the name of the session's.
std::vector<std::string_view> SecretsIn(std::string_view header)
{
    std::vector<std::string_view> secrets;
    while (!header.empty())
    {
        std::string_view const cookie = TakeCookie(header);
        std::size_t const equals = std::min(cookie.find('='), cookie.size());
        if (cookie.substr(0, equals) == Sessions::COOKIE)
        {
            secrets.push_back(cookie.substr(std::min(equals + 1, cookie.size())));
        }
    }
    return secrets;
}

bool ChangesNothing(std::string_view method)
{
    return method == "GET" || method == "HEAD" || method == "OPTIONS";
}

uint64 LeftUsec(uint64 beginUsec, uint64 lengthUsec, uint64 nowUsec)
{
    uint64 const passedUsec = nowUsec - std::min(nowUsec, beginUsec);
    return lengthUsec - std::min(passedUsec, lengthUsec);
}

} // namespace

uint64 Sessions::Session::IdleLeftUsec(uint64 nowUsec) const noexcept
{
    return std::min(LeftUsec(lastUsec, IDLE_USEC, nowUsec), LifeLeftUsec(nowUsec));
}

uint64 Sessions::Session::LifeLeftUsec(uint64 nowUsec) const noexcept
{
    return LeftUsec(beginUsec, LIFETIME_USEC, nowUsec);
}

Sessions::Sessions(UserStore const& usedUsers, Clock newClock) : users(usedUsers), clock(std::move(newClock))
{
    Randomness::Prepare();
}

Sessions::~Sessions() = default;

Sessions::Opened Sessions::Open(UserName const& user, ZuCommon::Role role, std::string const& source)
{
    uint64 const nowUsec = clock();
    Opened opened{Randomness::Secret(),
                  {Randomness::Characters(ID_CHARACTERS, ID_ALPHABET), user, role, source, Randomness::Secret(),
                   nowUsec, nowUsec}};
    Zu::MutexLock const guard(lock);
    Prune();
    MakeRoom(user);
    sessions.emplace(Randomness::Fingerprint(opened.secret), opened.session);
    return opened;
}

std::optional<Sessions::Session> Sessions::Get(std::string const& id) const
{
    Zu::MutexLock const guard(lock);
    auto const found = std::ranges::find_if(sessions, [&](auto const& one) { return one.second.id == id; });
    bool const isThere = found != sessions.end() && !HasEnded(found->second);
    return isThere ? std::optional(found->second) : std::nullopt;
}

std::vector<Sessions::Session> Sessions::List() const
{
    std::vector<Session> list;
    {
        Zu::MutexLock const guard(lock);
        for (auto const& [fingerprint, session] : sessions)
        {
            if (!HasEnded(session))
            {
                list.push_back(session);
            }
        }
    }
    std::ranges::sort(list, {}, &Session::beginUsec);
    return list;
}

bool Sessions::End(std::string const& id)
{
    std::size_t count = 0;
    {
        Zu::MutexLock const guard(lock);
        Prune();
        count = std::erase_if(sessions, [&](auto const& one) { return one.second.id == id; });
    }
    if (count != 0)
    {
        ended.Fire();
    }
    return count != 0;
}

void Sessions::EndOf(UserName const& user)
{
    {
        Zu::MutexLock const guard(lock);
        std::erase_if(sessions, [&](auto const& one) { return one.second.user == user; });
    }
    ended.Fire();
}

Zu::Signal<>& Sessions::EndedSignal() noexcept
{
    return ended;
}

bool Sessions::HasCallers() const noexcept
{
    return users.HasUsers();
}

Proof Sessions::Find(Credentials const& credentials)
{
    std::vector<std::string_view> const secrets = SecretsIn(credentials.cookie);
    if (secrets.empty())
    {
        return {};
    }
    Proof const wrong{std::nullopt, "", true};
    if (secrets.size() > 1) // only a forged header has two: the browser keeps one cookie of this name
    {
        return wrong;
    }
    std::string const fingerprint = Randomness::Fingerprint(secrets.front());
    Zu::MutexLock const guard(lock);
    auto const found = sessions.find(fingerprint);
    if (found == sessions.end() || HasEnded(found->second))
    {
        return wrong;
    }
    Session& session = found->second;
    session.lastUsec = clock();
    Proof proof{KnownCaller{session.role, "user " + session.user.Text(), session.id}, "", false};
    if (!ChangesNothing(credentials.method) &&
        !Randomness::AreEqual(credentials.crossSiteToken, session.crossSiteToken))
    {
        proof.refusal = "The request lacks the token of the session: send the header X-CSRF-Token with the member "
                        "crossSiteToken of /session.";
    }
    return proof;
}

bool Sessions::IsCurrent(ZuRest::Caller const& caller) const noexcept
{
    if (caller.sessionId.empty())
    {
        return false;
    }
    Zu::MutexLock const guard(lock);
    return std::ranges::any_of(
        sessions, [&](auto const& one) { return one.second.id == caller.sessionId && !HasEnded(one.second); });
}

bool Sessions::HasEnded(Session const& session) const
{
    return session.IdleLeftUsec(clock()) == 0;
}

void Sessions::Prune()
{
    std::erase_if(sessions, [this](auto const& one) { return HasEnded(one.second); });
}

void Sessions::MakeRoom(UserName const& user)
{
    if (sessions.size() < MAX_SESSIONS)
    {
        return;
    }
    std::map<UserName, std::size_t> counts;
    for (auto const& [fingerprint, session] : sessions)
    {
        ++counts[session.user];
    }
    auto const most = std::ranges::max_element(counts, {}, [](auto const& one) { return one.second; });
    UserName const chosen = counts.contains(user) ? user : most->first;
    auto victim = sessions.end();
    for (auto one = sessions.begin(); one != sessions.end(); ++one)
    {
        bool const isOlder = victim == sessions.end() || one->second.lastUsec < victim->second.lastUsec;
        victim = one->second.user == chosen && isOlder ? one : victim;
    }
    sessions.erase(victim);
}

} // namespace ZuHost
