#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Roles.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Outcome/Failure.h"

namespace ZuCtl
{

namespace
{

using nlohmann::json;

std::string PathOfUser(Call const& call)
{
    return "/users/" + Escaped(call.Text("NAME"));
}

void ListUsers(Call& call)
{
    json const users = call.Device().Get("/users").at("users");
    if (call.PrintedJson(users))
    {
        return;
    }
    std::vector<std::vector<Cell>> rows;
    for (json const& user : users)
    {
        rows.push_back({Shown(user, "name"), Shown(user, "role"),
                        std::string(user.at("enabled").get<bool>() ? "yes" : "no"), Shown(user, "created"),
                        Shown(user, "lastLogin")});
    }
    call.Out().Table({"NAME", "ROLE", "ENABLED", "CREATED", "LAST LOGIN"}, rows);
}

void AddUser(Call& call)
{
    std::string const name = call.Text("NAME");
    std::string const password = call.Secret("--new-password-file", "password of " + name, true);
    call.Device().Change("POST", "/users", {{"name", name}, {"role", call.Text("ROLE")}, {"password", password}});
    call.Done(name + " is added as " + call.Text("ROLE"));
}

/// The changes of a user that the options ask for.
json ChangesOf(Call const& call)
{
    json changes = json::object();
    if (call.Has("--role"))
    {
        changes["role"] = call.Text("--role");
    }
    if (call.Has("--enabled"))
    {
        changes["enabled"] = call.Text("--enabled") == "yes";
    }
    if (call.Has("--new-password-file") || call.Has("--password"))
    {
        changes["password"] = call.Secret("--new-password-file", "password of " + call.Text("NAME"), true);
    }
    if (call.Has("--old-password-file"))
    {
        changes["oldPassword"] = call.Secret("--old-password-file", "");
    }
    if (changes.empty())
    {
        throw Failure(ExitStatus::USAGE, "Say what to change: --role, --enabled or --password");
    }
    return changes;
}

void ChangeUser(Call& call)
{
    json const changes = ChangesOf(call);
    call.Device().Change("PATCH", PathOfUser(call), changes);
    call.Done(call.Text("NAME") + " is changed");
}

void DeleteUser(Call& call)
{
    call.Device().Delete(PathOfUser(call));
    call.Done(call.Text("NAME") + " is deleted");
}

void SetUp(Call& call)
{
    std::string const name = call.Text("NAME");
    std::string const password = call.Secret("--new-password-file", "password of " + name, true);
    call.Device().Change("POST", "/setup", {{"code", call.Text("CODE")}, {"name", name}, {"password", password}});
    call.Done(name + " is the first administrator");
}

} // namespace

std::vector<Command> UsersCommands()
{
    using enum Argument::Kind;
    using enum Argument::Values;
    Argument const name{WORD, "NAME", "", "the user", TEXT, {}};
    Argument const role{WORD, "ROLE", "", "what the user may do", CHOICES, RoleNames()};
    Argument const file{OPTION, "--new-password-file", "FILE", "the password, in the first line of this file", FILES,
                        {}};
    return {
        {"users", "list, add, change and delete users", "", {}, nullptr},
        {"users list", "list the users", "", {}, &ListUsers},
        {"users add",
         "add a user",
         "The first user is an administrator, and closes the sensor to programs without a login.",
         {name, role, file},
         &AddUser},
        {"users change",
         "change the role or the password of a user, or whether it may log in",
         "",
         {name,
          {OPTION, "--role", "ROLE", "the new role", CHOICES, RoleNames()},
          {OPTION, "--enabled", "yes|no", "whether the user may log in", CHOICES, {"yes", "no"}},
          {FLAG, "--password", "", "ask for a new password", TEXT, {}},
          file,
          {OPTION, "--old-password-file", "FILE", "the old password, for a change of the own one", FILES, {}}},
         &ChangeUser},
        {"users delete", "delete a user", "", {name}, &DeleteUser},
        {"users setup",
         "make the first administrator with the code that the host shows at its first start",
         "",
         {{WORD, "CODE", "", "the code", TEXT, {}}, name, file},
         &SetUp},
    };
}

} // namespace ZuCtl
