#pragma once

#include "Host/Security/UserName.h"
#include "ZuCommon/Role.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ZuHost
{

class SecurityStore;

/// A person who may log in.
struct User
{
    UserName name;
    ZuCommon::Role role = ZuCommon::Role::VIEWER;
    bool isEnabled = true;
    std::string hash;      ///< of the password, see `PasswordHasher`; it leaves the host nowhere but in the archive
    std::string created;   ///< UTC, "2026-11-22T18:00:00Z"
    std::string lastLogin; ///< in the same form; empty: never

    bool operator==(User const&) const = default;
};

/// The users, in the archive of users and tokens.
///
/// As long as there are users, one of them is an administrator who may log in: a change after which there would be none
/// is refused. Each change is durable when the operation returns; if it throws, nothing has changed.
/// If the archive cannot be read, nobody is known, and every change but `PutAdministrator` is refused.
/// All operations are thread-safe. Reads do not wait for the disk.
class UserStore final
{
public:
    static constexpr std::size_t MAX_USERS = 100;

    struct Change
    {
        std::optional<ZuCommon::Role> role;
        std::optional<bool> isEnabled;
        std::optional<std::string> hash;
    };

    /// Reads the users. The archive outlives this.
    explicit UserStore(SecurityStore& usedArchive);
    ~UserStore();

    UserStore(UserStore const&) = delete;
    UserStore& operator=(UserStore const&) = delete;

    /// Why the users could not be read: a sentence for the user; empty if they could.
    std::string Fault() const;

    /// Whether there are users, or may be some that cannot be read.
    bool HasUsers() const noexcept;

    /// All users, sorted by name.
    std::vector<User> List() const;

    std::optional<User> Find(UserName const& name) const;

    /// Throws `Zu::Status::ALREADY_EXISTS` if the name is taken, `Zu::Status::FULL` beyond `MAX_USERS`,
    /// `Zu::Status::WRONG_STATE` if the first user is no administrator, each with a sentence. This and the other changes
    /// throw as `SecurityStore::Save` too.
    void Add(User const& user);

    /// Throws `Zu::Status::NOT_FOUND` if there is no such user, `Zu::Status::WRONG_STATE` if no administrator would be
    /// left.
    void Update(UserName const& name, Change const& change);

    /// Throws as `Update`.
    void Remove(UserName const& name);

    /// Adds an administrator, or makes the user of this name one, with this password. It also replaces a document that
    /// cannot be read. Throws `Zu::Status::FULL` as `Add`.
    void PutAdministrator(User const& user);

    /// Sets the time of the last login. Does nothing if there is no such user.
    void NoteLogin(UserName const& name, std::string const& time);

private:
    using Users = std::map<UserName, User>;

    void Read();
    void CheckReadable() const;
    void Store(Users changed, bool isRecovery) ZU_REQUIRES(changeLock);
    Users Copy() const;

    SecurityStore& archive;
    Zu::Mutex changeLock;   // order only: one change at a time; `lock` and the lock of the archive are taken under it
    mutable Zu::Mutex lock; // a leaf
    Users users ZU_GUARDED_BY(lock);
    std::string fault ZU_GUARDED_BY(lock);
    std::atomic<bool> hasUsers = false; // publishes nothing else
};

} // namespace ZuHost
