#pragma once

#include "Host/Security/LoginBrake.h"
#include "Host/Security/Sessions.h"
#include "Host/Security/UserStore.h"
#include "wApi/wTime.h"

#include <functional>
#include <optional>
#include <string>

namespace ZuHost
{

class ITrail;
class PasswordHasher;
class SetupCode;
class WordList;

/// Logins, and changes of users and sessions, each with the checks before it and an entry in the trail after it.
///
/// A wrong name, a wrong password and a disabled user look alike from outside: each takes the time of one hash and gets
/// the same answer.
/// All operations are thread-safe. They wait for the disk, and those with a password for a hash; then they throw
/// `Zu::Status::BUSY` with a sentence if too many wait.
class Accounts final
{
public:
    /// The objects outlive this.
    struct Parts
    {
        UserStore& users;
        Sessions& sessions;
        PasswordHasher& hasher;
        WordList const& words;
        SetupCode& setupCode;
        ITrail& trail;
        /// Whether the sender of a request still has the rights with which the request was admitted.
        std::function<bool(ZuRest::Caller const& caller)> isCurrent;
    };

    /// The judgement of a password or code.
    struct Verdict
    {
        bool isRight = false;
        uint64 waitUsec = 0; ///< if not 0, nothing was checked: the caller has to wait so long after too many failures
    };

    struct Login
    {
        Verdict verdict;
        std::optional<Sessions::Opened> opened; ///< set if the verdict is right
    };

    struct Change
    {
        std::optional<ZuCommon::Role> role;
        std::optional<bool> isEnabled;
        std::optional<std::string> password;
        std::string oldPassword; ///< needed if users change their own password
    };

    explicit Accounts(Parts newParts, Sessions::Clock newClock = wTime_NowUsec);
    ~Accounts();

    Accounts(Accounts const&) = delete;
    Accounts& operator=(Accounts const&) = delete;

    Login LogIn(ZuRest::Caller const& caller, std::string const& name, std::string const& password);

    /// Ends the session of the caller. Throws `Zu::Status::WRONG_STATE` if the caller has none.
    void LogOut(ZuRest::Caller const& caller);

    /// Ends a session. Throws `Zu::Status::NOT_FOUND` for a session that the caller may not see.
    void EndSession(ZuRest::Caller const& caller, std::string const& id);

    /// The sessions that the caller may see: the own ones, or all for administrators.
    std::vector<Sessions::Session> SessionsFor(ZuRest::Caller const& caller) const;

    /// The present moment of the clock that sessions end by.
    uint64 NowUsec() const;

    /// The user behind the caller's session; nothing for other callers.
    std::optional<UserName> UserOf(ZuRest::Caller const& caller) const;

    /// The users that the caller may see, as `SessionsFor`.
    std::vector<User> UsersFor(ZuRest::Caller const& caller) const;

    /// Throws as `UserStore::Add`, and `Zu::Status::BAD_ARGUMENT` with a sentence for a name or password against the
    /// rules.
    void AddUser(ZuRest::Caller const& caller, UserName const& name, ZuCommon::Role role, std::string const& password);

    /// Changes a user; users who are no administrators can only change their own password. Ends the user's sessions. If
    /// the verdict on the old password is not right, nothing has changed. Throws as `UserStore::Update` and `AddUser`,
    /// and `Zu::Status::WRITE_ONLY_REFUSED` for a change that the caller may not make.
    Verdict ChangeUser(ZuRest::Caller const& caller, UserName const& name, Change const& change);

    /// Throws as `UserStore::Remove`.
    void RemoveUser(ZuRest::Caller const& caller, UserName const& name);

    /// Makes an administrator with the one-time code, or gives the user of this name the role and the password. Throws
    /// `Zu::Status::WRONG_STATE` if there is no code, and as `AddUser`; the code can then be used again.
    Verdict SetUp(ZuRest::Caller const& caller, std::string const& code, std::string const& name,
                  std::string const& password);

    /// Notes a change that was refused before it has reached this object. `name` is the user's, or empty.
    void NoteRefusal(ZuRest::Caller const& caller, char const* what, std::string const& name,
                     std::string const& reason);

private:
    Verdict CheckPassword(ZuRest::Caller const& caller, std::optional<User> const& user, std::string const& key,
                          std::string const& password);
    std::string HashOf(UserName const& name, std::string const& password);
    void CheckCurrent(ZuRest::Caller const& caller) const;
    void Note(ZuRest::Caller const& caller, std::string what, std::string result, std::string before = {},
              std::string after = {});
    /// Makes the change, which may only be checked: then it returns why it was refused.
    using Work = std::function<std::string()>;
    void Carry(ZuRest::Caller const& caller, char const* what, UserName const& name, std::string const& after,
               Work const& change);

    Parts const parts;
    Sessions::Clock const clock;
    LoginBrake brake;
};

} // namespace ZuHost
