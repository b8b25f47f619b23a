#include "Host/Security/UserStore.h"

#include "Host/Security/PasswordHasher.h"
#include "Host/Security/SecurityStore.h"
#include "ZuApi/Exception.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace ZuHost
{

using Json = nlohmann::json;
using ZuCommon::Role;

namespace
{

constexpr char const* USERS_DOCUMENT = "security/users";

bool MayAdminister(User const& user)
{
    return user.isEnabled && user.role == Role::ADMINISTRATOR;
}

Json ToJson(User const& user)
{
    return {{"name", user.name.Text()},  {"role", ZuCommon::RoleName(user.role)},
            {"enabled", user.isEnabled}, {"passwordHash", user.hash},
            {"created", user.created},   {"lastLogin", user.lastLogin}};
}

/// Throws for a document that `ToJson` does not write.
User FromJson(Json const& document)
{
    auto const role = ZuCommon::RoleOfName(document.at("role").get<std::string>());
    User user{UserName(document.at("name").get<std::string>()),
              role.value_or(Role::NONE),
              document.at("enabled").get<bool>(),
              document.at("passwordHash").get<std::string>(),
              document.at("created").get<std::string>(),
              document.at("lastLogin").get<std::string>()};
    if (!role.has_value() || !PasswordHasher::IsHash(user.hash))
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The entry of the user '%s' is damaged.", user.name.Text().c_str());
    }
    return user;
}

template <typename Users>
auto FindUser(Users& users, UserName const& name)
{
    auto const found = users.find(name);
    if (found == users.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no user '%s'.", name.Text().c_str());
    }
    return found;
}

} // namespace

UserStore::UserStore(SecurityStore& usedArchive) : archive(usedArchive)
{
    Read();
}

UserStore::~UserStore() = default;

void UserStore::Read()
{
    Zu::MutexLock const guard(lock);
    try
    {
        Json const document = archive.Load(USERS_DOCUMENT);
        if (document.is_null())
        {
            return;
        }
        for (Json const& one : document.at("users"))
        {
            User user = FromJson(one);
            UserName const name = user.name;
            users.insert_or_assign(name, std::move(user));
        }
        hasUsers = !users.empty();
    }
    catch (...)
    {
        users.clear();
        fault = "The users cannot be read, so nobody can log in: " + Zu::CaughtReason();
        hasUsers = true;
    }
}

std::string UserStore::Fault() const
{
    Zu::MutexLock const guard(lock);
    return fault;
}

bool UserStore::HasUsers() const noexcept
{
    return hasUsers;
}

std::vector<User> UserStore::List() const
{
    std::vector<User> list;
    for (auto& [name, user] : Copy())
    {
        list.push_back(user);
    }
    return list;
}

std::optional<User> UserStore::Find(UserName const& name) const
{
    Zu::MutexLock const guard(lock);
    auto const found = users.find(name);
    return found != users.end() ? std::optional(found->second) : std::nullopt;
}

void UserStore::Add(User const& user)
{
    Zu::MutexLock const guard(changeLock);
    CheckReadable();
    Users changed = Copy();
    if (changed.empty() && !MayAdminister(user))
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "The first user has the role administrator.");
    }
    if (!changed.try_emplace(user.name, user).second)
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS, "There is a user '%s' already.", user.name.Text().c_str());
    }
    Store(std::move(changed), false);
}

void UserStore::Update(UserName const& name, Change const& change)
{
    Zu::MutexLock const guard(changeLock);
    CheckReadable();
    Users changed = Copy();
    User& user = FindUser(changed, name)->second;
    user.role = change.role.value_or(user.role);
    user.isEnabled = change.isEnabled.value_or(user.isEnabled);
    user.hash = change.hash.value_or(user.hash);
    Store(std::move(changed), false);
}

void UserStore::Remove(UserName const& name)
{
    Zu::MutexLock const guard(changeLock);
    CheckReadable();
    Users changed = Copy();
    changed.erase(FindUser(changed, name));
    Store(std::move(changed), false);
}

void UserStore::PutAdministrator(User const& user)
{
    Zu::MutexLock const guard(changeLock);
    Users changed = Copy();
    User administrator = user;
    administrator.role = Role::ADMINISTRATOR;
    administrator.isEnabled = true;
    if (auto const present = changed.find(user.name); present != changed.end())
    {
        administrator.created = present->second.created;
        administrator.lastLogin = present->second.lastLogin;
    }
    changed.insert_or_assign(user.name, std::move(administrator));
    Store(std::move(changed), true);
}

void UserStore::NoteLogin(UserName const& name, std::string const& time)
{
    Zu::MutexLock const guard(changeLock);
    Users changed = Copy();
    if (auto const found = changed.find(name); found != changed.end())
    {
        found->second.lastLogin = time;
        Store(std::move(changed), false);
    }
}

void UserStore::CheckReadable() const
{
    if (std::string const reason = Fault(); !reason.empty())
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "%s", reason.c_str());
    }
}

/// Checks and stores the users, then takes them over.
void UserStore::Store(Users changed, bool isRecovery)
{
    if (changed.size() > MAX_USERS)
    {
        ZU_THROW(Zu::Status::FULL, "There are %zu users already: remove one first.", MAX_USERS);
    }
    if (std::ranges::none_of(changed, [](auto const& one) { return MayAdminister(one.second); }))
    {
        ZU_THROW(Zu::Status::WRONG_STATE,
                 "No administrator would be left who can log in: give another user this role first.");
    }
    Json list = Json::array();
    for (auto const& [name, user] : changed)
    {
        list.push_back(ToJson(user));
    }
    archive.Save(USERS_DOCUMENT, {{"users", std::move(list)}});
    Zu::MutexLock const guard(lock);
    users = std::move(changed);
    hasUsers = true;
    fault = isRecovery ? "" : fault;
}

UserStore::Users UserStore::Copy() const
{
    Zu::MutexLock const guard(lock);
    return users;
}

} // namespace ZuHost
