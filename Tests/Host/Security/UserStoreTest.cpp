#include "Host/Security/UserStore.h"

#include "Host/Security/PasswordHasher.h"
#include "Host/Security/SecurityStore.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <thread>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using ZuCommon::Role;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

constexpr char const* HASH =
    "$argon2id$v=19$m=8192,t=1,p=1$AAAAAAAAAAAAAAAAAAAAAA$AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA";

User UserOf(char const* name, Role role, bool isEnabled = true)
{
    return {UserName(name), role, isEnabled, HASH, "2026-11-22T18:00:00Z", ""};
}

Refusal const NO_ADMINISTRATOR{Zu::Status::WRONG_STATE,
                               "No administrator would be left who can log in: give another user this role first."};

} // namespace

class UserStoreTest : public testing::Test
{
protected:
    /// What a host finds that starts with this archive.
    std::vector<User> Kept()
    {
        return UserStore(archive).List();
    }

    ZuTest::ScratchFolder scratch;
    SecurityStore archive{scratch / "security"};
    UserStore users{archive};
};

TEST_F(UserStoreTest, BeginsWithoutUsers)
{
    EXPECT_FALSE(users.HasUsers());
    EXPECT_EQ(users.Fault(), "");
    EXPECT_TRUE(users.List().empty());
    EXPECT_FALSE(users.Find(UserName("anna")).has_value());
    EXPECT_FALSE(std::filesystem::exists(scratch / "security"));
}

TEST_F(UserStoreTest, KeepsUsersOverARestart)
{
    users.Add(UserOf("bert", Role::ADMINISTRATOR));
    users.Add(UserOf("Anna", Role::OPERATOR, false));
    users.NoteLogin(UserName("bert"), "2026-11-23T06:00:00Z");

    EXPECT_TRUE(users.HasUsers());
    ASSERT_EQ(Kept(), users.List());
    User const anna = Kept().at(0);
    EXPECT_EQ(anna, UserOf("Anna", Role::OPERATOR, false));
    EXPECT_EQ(Kept().at(1).lastLogin, "2026-11-23T06:00:00Z");
    EXPECT_EQ(users.Find(UserName("ANNA")), anna);
}

TEST_F(UserStoreTest, TakesOneUserOfAName)
{
    users.Add(UserOf("Anna", Role::ADMINISTRATOR));
    EXPECT_EQ(RefusalOf([&] { users.Add(UserOf("ANNA", Role::VIEWER)); }),
              (Refusal{Zu::Status::ALREADY_EXISTS, "There is a user 'ANNA' already."}));
    EXPECT_EQ(Kept().size(), 1U);
}

TEST_F(UserStoreTest, TakesNoFirstUserWhoIsNoAdministrator)
{
    Refusal const expected{Zu::Status::WRONG_STATE, "The first user has the role administrator."};
    EXPECT_EQ(RefusalOf([&] { users.Add(UserOf("anna", Role::ENGINEER)); }), expected);
    EXPECT_EQ(RefusalOf([&] { users.Add(UserOf("anna", Role::ADMINISTRATOR, false)); }), expected);
    EXPECT_FALSE(users.HasUsers());
}

TEST_F(UserStoreTest, TakesABoundedNumberOfUsers)
{
    users.Add(UserOf("admin", Role::ADMINISTRATOR));
    for (std::size_t i = 1; i < UserStore::MAX_USERS; ++i)
    {
        users.Add(UserOf(("user" + std::to_string(i)).c_str(), Role::VIEWER));
    }
    Refusal const expected{Zu::Status::FULL, "There are 100 users already: remove one first."};
    EXPECT_EQ(RefusalOf([&] { users.Add(UserOf("one more", Role::VIEWER)); }), expected);
    EXPECT_EQ(RefusalOf([&] { users.PutAdministrator(UserOf("one more", Role::VIEWER)); }), expected);
    EXPECT_EQ(Kept().size(), UserStore::MAX_USERS);
}

TEST_F(UserStoreTest, ChangesOnlyWhatAChangeNames)
{
    users.Add(UserOf("anna", Role::ADMINISTRATOR));
    users.Add(UserOf("bert", Role::VIEWER));

    users.Update(UserName("bert"), {Role::ENGINEER, {}, {}});
    EXPECT_EQ(users.Find(UserName("bert")), UserOf("bert", Role::ENGINEER));
    users.Update(UserName("bert"), {{}, false, {}});
    EXPECT_EQ(users.Find(UserName("bert")), UserOf("bert", Role::ENGINEER, false));
    users.Update(UserName("bert"), {{}, {}, "new"});
    EXPECT_EQ(users.Find(UserName("bert"))->hash, "new");

    users.Remove(UserName("bert"));
    EXPECT_FALSE(users.Find(UserName("bert")).has_value());
    Refusal const missing{Zu::Status::NOT_FOUND, "There is no user 'bert'."};
    EXPECT_EQ(RefusalOf([&] { users.Update(UserName("bert"), {}); }), missing);
    EXPECT_EQ(RefusalOf([&] { users.Remove(UserName("bert")); }), missing);
    users.NoteLogin(UserName("bert"), "2026-11-23T06:00:00Z");
    EXPECT_EQ(users.List().size(), 1U);
}

TEST_F(UserStoreTest, KeepsAnAdministrator)
{
    users.Add(UserOf("anna", Role::ADMINISTRATOR));
    users.Add(UserOf("bert", Role::ENGINEER));
    users.Add(UserOf("carl", Role::ADMINISTRATOR, false));

    EXPECT_EQ(RefusalOf([&] { users.Remove(UserName("anna")); }), NO_ADMINISTRATOR);
    EXPECT_EQ(RefusalOf([&] { users.Update(UserName("anna"), {Role::ENGINEER, {}, {}}); }), NO_ADMINISTRATOR);
    EXPECT_EQ(RefusalOf([&] { users.Update(UserName("anna"), {{}, false, {}}); }), NO_ADMINISTRATOR);
    EXPECT_EQ(users.Find(UserName("anna")), UserOf("anna", Role::ADMINISTRATOR));

    users.Update(UserName("bert"), {Role::ADMINISTRATOR, {}, {}});
    users.Remove(UserName("anna"));
    EXPECT_EQ(Kept().size(), 2U);
}

TEST_F(UserStoreTest, KeepsAnAdministratorWhenTwoDemoteEachOther)
{
    for (unsigned round = 0; round < 20; ++round)
    {
        users.PutAdministrator(UserOf("anna", Role::ADMINISTRATOR));
        users.PutAdministrator(UserOf("bert", Role::ADMINISTRATOR));
        auto const demote = [this](char const* name) {
            return [this, name] { RefusalOf([&] { users.Update(UserName(name), {Role::VIEWER, {}, {}}); }); };
        };
        std::thread anna(demote("bert"));
        std::thread bert(demote("anna"));
        anna.join();
        bert.join();

        unsigned administrators = 0;
        for (User const& user : Kept())
        {
            administrators += user.role == Role::ADMINISTRATOR ? 1 : 0;
        }
        EXPECT_EQ(administrators, 1U) << round;
    }
}

TEST_F(UserStoreTest, PutsAnAdministratorBackInPlace)
{
    users.Add(UserOf("anna", Role::ADMINISTRATOR));
    users.Add(UserOf("bert", Role::VIEWER, false));
    users.NoteLogin(UserName("bert"), "2026-11-23T06:00:00Z");
    User given = UserOf("bert", Role::VIEWER);
    given.hash = "new";
    given.created = "later";

    users.PutAdministrator(given);

    User const bert = *users.Find(UserName("bert"));
    EXPECT_TRUE(bert.role == Role::ADMINISTRATOR && bert.isEnabled);
    EXPECT_EQ(bert.hash, "new");
    EXPECT_EQ(bert.created, "2026-11-22T18:00:00Z");
    EXPECT_EQ(bert.lastLogin, "2026-11-23T06:00:00Z");
    EXPECT_EQ(users.List().size(), 2U);
}

TEST_F(UserStoreTest, LetsNobodyInWhenTheDocumentIsDamaged)
{
    Json const anna{{"name", "anna"},       {"role", "administrator"}, {"enabled", true},
                    {"passwordHash", HASH}, {"created", ""},           {"lastLogin", ""}};
    auto const with = [&](char const* key, Json const& value) {
        Json changed = anna;
        changed[key] = value;
        return Json{{"users", {changed}}};
    };
    Json const documents[] = {
        Json::array(),
        {{"people", 1}},
        {{"users", 1}},
        with("name", "a\nb"),
        with("name", 1),
        with("role", "king"),
        with("role", "none"),
        with("enabled", "yes"),
        with("passwordHash", "secret"),
        with("created", nullptr),
    };
    for (Json const& document : documents)
    {
        archive.Save("security/users", document);
        UserStore const damaged(archive);
        EXPECT_TRUE(damaged.HasUsers()) << document;
        EXPECT_TRUE(damaged.List().empty()) << document;
        EXPECT_TRUE(damaged.Fault().starts_with("The users cannot be read, so nobody can log in: ")) << document;
        EXPECT_EQ(damaged.Fault().find("secret"), std::string::npos);
    }
}

TEST_F(UserStoreTest, IsRepairedByANewAdministratorOnly)
{
    archive.Save("security/users", Json::array());
    UserStore damaged(archive);
    for (Refusal const& refusal : {RefusalOf([&] { damaged.Add(UserOf("anna", Role::ADMINISTRATOR)); }),
                                   RefusalOf([&] { damaged.Update(UserName("anna"), {}); }),
                                   RefusalOf([&] { damaged.Remove(UserName("anna")); })})
    {
        EXPECT_EQ(refusal, (Refusal{Zu::Status::WRONG_STATE, damaged.Fault()}));
    }

    damaged.PutAdministrator(UserOf("anna", Role::ADMINISTRATOR));

    EXPECT_EQ(damaged.Fault(), "");
    EXPECT_EQ(Kept().size(), 1U);
}

TEST_F(UserStoreTest, LetsNobodyInWhenTheArchiveIsDamaged)
{
    users.Add(UserOf("anna", Role::ADMINISTRATOR));
    ZuTest::WriteBytes(scratch / "security", std::string(8192, 'x'));

    UserStore damaged(archive);

    EXPECT_TRUE(damaged.HasUsers());
    EXPECT_TRUE(damaged.List().empty());
    EXPECT_EQ(RefusalOf([&] { damaged.PutAdministrator(UserOf("anna", Role::ADMINISTRATOR)); }).status,
              Zu::Status::BAD_FORMAT);
    EXPECT_EQ(RefusalOf([&] { users.Update(UserName("anna"), {{}, {}, "new"}); }).status, Zu::Status::BAD_FORMAT);
    EXPECT_EQ(users.Find(UserName("anna"))->hash, HASH) << "a change that is not stored does not happen";
}

} // namespace ZuHost
