#pragma once

#include "Host/Security/ICallerSource.h"
#include "Host/Security/UserName.h"
#include "ZuApi/Signal.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZuHost
{

class UserStore;

/// The sessions of browsers, known by a cookie.
///
/// The cookie is a random secret of 256 bits, of which only a hash is kept, in memory: a restart of the host ends all
/// sessions. A request with another method than GET, HEAD and OPTIONS must show the session's token against cross-site
/// requests too, which a page of another site cannot read. A session ends after some time without a request, and after
/// some time in any case, by the monotonic clock.
/// All operations are thread-safe and do not block.
class Sessions final : public ICallerSource
{
public:
    /// The prefix binds the cookie to this host, to the whole of it, and to encrypted connections; browsers take
    /// connections to localhost as such.
    static constexpr std::string_view COOKIE = "__Host-zucontrol";

    static constexpr uint64 IDLE_USEC = 30 * 60'000'000ULL;
    static constexpr uint64 LIFETIME_USEC = 12 * 3600'000'000ULL;
    static constexpr std::size_t MAX_SESSIONS = 32;

    /// A moment in microseconds, as `wTime_NowUsec`.
    using Clock = std::function<uint64()>;

    struct Session
    {
        std::string id; ///< public
        UserName user;
        ZuCommon::Role role = ZuCommon::Role::NONE;
        std::string source;         ///< of the login, as `ZuRest::Caller::source`
        std::string crossSiteToken; ///< for the session's own user only
        uint64 beginUsec = 0;
        uint64 lastUsec = 0; ///< of the last request

        /// The time that the session has left at `nowUsec` if there are no requests; 0 if it has ended.
        uint64 IdleLeftUsec(uint64 nowUsec) const noexcept;
        uint64 LifeLeftUsec(uint64 nowUsec) const noexcept;
    };

    struct Opened
    {
        std::string secret; ///< the value of the cookie
        Session session;
    };

    /// The users outlive this.
    explicit Sessions(UserStore const& usedUsers, Clock newClock = wTime_NowUsec);
    ~Sessions() override;

    Sessions(Sessions const&) = delete;
    Sessions& operator=(Sessions const&) = delete;

    /// Opens a session for a user whose password is right. If there are `MAX_SESSIONS` already, it ends one: the
    /// longest idle session of this user, or if the user has none, of the user with the most sessions.
    Opened Open(UserName const& user, ZuCommon::Role role, std::string const& source);

    /// Returns the session with this public id. Does not count as a request.
    std::optional<Session> Get(std::string const& id) const;

    /// All sessions, in the order of their logins.
    std::vector<Session> List() const;

    /// Returns false if there is no such session.
    bool End(std::string const& id);

    /// Ends all sessions of a user: the user is gone, or the role or the password has changed.
    void EndOf(UserName const& user);

    /// Fires when a session has been ended before its time, so that open streams of its user can end.
    Zu::Signal<>& EndedSignal() noexcept;

    bool HasCallers() const noexcept override;
    Proof Find(Credentials const& credentials) override;
    bool IsCurrent(ZuRest::Caller const& caller) const noexcept override;

private:
    bool HasEnded(Session const& session) const;
    void Prune() ZU_REQUIRES(lock);
    void MakeRoom(UserName const& user) ZU_REQUIRES(lock);

    UserStore const& users;
    Clock const clock;
    Zu::Signal<> ended;

    mutable Zu::Mutex lock;                                      // a leaf
    std::map<std::string, Session> sessions ZU_GUARDED_BY(lock); // by the hash of the secret
};

} // namespace ZuHost
