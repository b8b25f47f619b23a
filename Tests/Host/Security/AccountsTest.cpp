#include "Host/Security/Accounts.h"

#include "Host/Security/AccountsFixture.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"

#include <gmock/gmock.h>

namespace ZuHost
{

namespace
{

using testing::ElementsAre;
using ZuCommon::Role;
using ZuRest::Caller;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

} // namespace

using AccountsTest = AccountsFixture;

TEST_F(AccountsTest, LogAUserIn)
{
    Add("Anna", Role::ADMINISTRATOR);
    trail.Clear();

    Accounts::Login const login = accounts.LogIn(Stranger(), "ANNA", PASSWORD);

    ASSERT_TRUE(login.opened.has_value());
    EXPECT_TRUE(login.verdict.isRight);
    EXPECT_EQ(login.opened->session.user.Text(), "Anna");
    EXPECT_EQ(login.opened->session.role, Role::ADMINISTRATOR);
    EXPECT_EQ(login.opened->session.source, "https 192.0.2.7");
    EXPECT_EQ(users.Find(UserName("anna"))->lastLogin.size(), 20U);
    EXPECT_THAT(trail.Lines(), ElementsAre("user Anna | https 192.0.2.7 | login |  |  | done"));
}

TEST_F(AccountsTest, RefuseEveryWrongLoginAlike)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::VIEWER);
    accounts.ChangeUser(Program(Role::ADMINISTRATOR), UserName("bert"), {{}, false, {}, ""});
    trail.Clear();
    struct Row
    {
        std::string name;
        std::string password;
    };
    Row const rows[] = {{"anna", OTHER_PASSWORD},
                        {"anna", ""},
                        {"anna", std::string(1'000'000, 'a')},
                        {"anna", "no UTF-8 \xFF but long enough"},
                        {"carl", PASSWORD},
                        {"bert", PASSWORD},
                        {"", PASSWORD},
                        {std::string(100'000, 'x'), PASSWORD},
                        {std::string("an\0na", 5), PASSWORD},
                        {PASSWORD, "anna"}};
    unsigned address = 0;
    for (Row const& row : rows)
    {
        nowUsec += 3600 * SECOND; // nobody has to wait
        Accounts::Login const login =
            accounts.LogIn(Stranger("10.0.0." + std::to_string(++address)), row.name, row.password);
        EXPECT_FALSE(login.opened.has_value()) << row.name.substr(0, 50);
        EXPECT_FALSE(login.verdict.isRight);
        EXPECT_EQ(login.verdict.waitUsec, 0U);
    }
    EXPECT_TRUE(sessions.List().empty());
    for (std::string const& line : trail.Lines())
    {
        EXPECT_TRUE(line.ends_with(" | login |  |  | refused: wrong name or password")) << line;
        EXPECT_EQ(line.find("horse"), line.npos) << line;
        EXPECT_EQ(line.find("donkey"), line.npos) << line;
    }
    EXPECT_EQ(trail.Lines().at(0), "user anna | https 10.0.0.1 | login |  |  | refused: wrong name or password");
    EXPECT_EQ(trail.Lines().at(4), "unknown user | https 10.0.0.5 | login |  |  | refused: wrong name or password");
}

TEST_F(AccountsTest, SlowGuessersDownAndLetTheRightPasswordInAfterTheWait)
{
    Add("anna", Role::ADMINISTRATOR);
    for (uint64 i = 0; i < LoginBrake::PROMPT_FAILURES; ++i)
    {
        EXPECT_EQ(accounts.LogIn(Stranger(), "anna", OTHER_PASSWORD).verdict.waitUsec, 0U);
    }
    trail.Clear();

    Accounts::Login const early = accounts.LogIn(Stranger(), "anna", PASSWORD);
    EXPECT_FALSE(early.opened.has_value());
    EXPECT_EQ(early.verdict.waitUsec, SECOND);
    EXPECT_THAT(trail.Lines(), ElementsAre("user anna | https 192.0.2.7 | login |  |  | refused: too many attempts"));

    nowUsec += SECOND;
    EXPECT_TRUE(accounts.LogIn(Stranger(), "anna", PASSWORD).opened.has_value());
}

TEST_F(AccountsTest, SlowAnUnknownUserDownAsAKnownOne)
{
    Add("anna", Role::ADMINISTRATOR);
    auto const waits = [this](char const* name, std::string const& network) {
        std::vector<uint64> found;
        for (unsigned i = 0; i < 8; ++i)
        {
            found.push_back(
                accounts.LogIn(Stranger(network + std::to_string(i)), name, OTHER_PASSWORD).verdict.waitUsec);
        }
        return found;
    };
    EXPECT_EQ(waits("anna", "10.0.0."), waits("nobody", "10.0.1."));
}

TEST_F(AccountsTest, CountTheAddressesOfOneVersion6NetworkTogether)
{
    for (uint64 i = 0; i < LoginBrake::PROMPT_FAILURES; ++i)
    {
        accounts.LogIn(Stranger("2001:db8::" + std::to_string(i)), "user" + std::to_string(i), OTHER_PASSWORD);
    }
    EXPECT_EQ(accounts.LogIn(Stranger("2001:db8::ffff"), "carl", OTHER_PASSWORD).verdict.waitUsec, SECOND);
    EXPECT_EQ(accounts.LogIn(Stranger("2001:db8:1::"), "dora", OTHER_PASSWORD).verdict.waitUsec, 0U);
}

TEST_F(AccountsTest, AnswerThousandsOfLoginsWithFewHashes)
{
    Add("anna", Role::ADMINISTRATOR);
    unsigned checked = 0;
    for (unsigned i = 0; i < 5000; ++i)
    {
        checked += accounts.LogIn(Stranger(), "anna", OTHER_PASSWORD).verdict.waitUsec == 0 ? 1 : 0;
    }
    EXPECT_EQ(checked, LoginBrake::PROMPT_FAILURES);
}

TEST_F(AccountsTest, LetAUserInWhenTheTimeOfTheLoginCannotBeStored)
{
    Add("anna", Role::ADMINISTRATOR);
    ZuTest::WriteBytes(scratch / "security", std::string(8192, 'x'));
    ZuTest::LogRecorder const log;

    EXPECT_TRUE(accounts.LogIn(Stranger(), "anna", PASSWORD).opened.has_value());

    ASSERT_EQ(log.Lines().size(), 1U);
    EXPECT_TRUE(log.Lines().at(0).text.starts_with("The time of a login cannot be stored: "));
}

TEST_F(AccountsTest, RefuseALoginIfTheUserIsChangedWhileThePasswordIsChecked)
{
    UserStore::Change const changes[] = {
        {Role::VIEWER, {}, {}}, {{}, false, {}}, {{}, {}, hasher.Hash("another horse battery")}};
    Add("anna", Role::ADMINISTRATOR);
    unsigned number = 0;
    for (UserStore::Change const& change : changes)
    {
        UserName const name("user" + std::to_string(++number));
        Add(name.Text().c_str(), Role::OPERATOR);
        trail.Clear();
        unsigned looks = 0;
        Accounts interrupted(parts, [&] {
            if (++looks == 2) // the first look is before the check, the second one after it
            {
                users.Update(name, change);
            }
            return nowUsec;
        });

        Accounts::Login const login = interrupted.LogIn(Stranger(), name.Text(), PASSWORD);

        EXPECT_EQ(looks, 2U);
        EXPECT_FALSE(login.verdict.isRight);
        EXPECT_EQ(login.verdict.waitUsec, 0U);
        EXPECT_FALSE(login.opened.has_value());
        EXPECT_TRUE(sessions.List().empty());
        EXPECT_EQ(users.Find(name)->lastLogin, "");
        EXPECT_THAT(trail.Lines(), ElementsAre("user " + name.Text() +
                                               " | https 192.0.2.7 | login |  |  | refused: the user has been changed "
                                               "meanwhile"));
    }
}

TEST_F(AccountsTest, RefuseALoginIfTheUserIsRemovedWhileThePasswordIsChecked)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::OPERATOR);
    unsigned looks = 0;
    Accounts interrupted(parts, [&] {
        if (++looks == 2)
        {
            users.Remove(UserName("bert"));
        }
        return nowUsec;
    });

    EXPECT_FALSE(interrupted.LogIn(Stranger(), "bert", PASSWORD).opened.has_value());

    EXPECT_TRUE(sessions.List().empty());
    EXPECT_EQ(trail.All().back().result, "refused: the user has been changed meanwhile");
}

TEST_F(AccountsTest, CountNoPasswordThatCannotBeChecked)
{
    Add("anna", Role::ADMINISTRATOR);
    std::string const hash = users.Find(UserName("anna"))->hash;
    std::string const costly = // the library takes no hash of so many passes
        "$argon2id$v=19$m=8192,t=4294967296,p=1$AAAAAAAAAAAAAAAAAAAAAA$AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA";
    users.Update(UserName("anna"), {{}, {}, costly});
    Refusal const busy{Zu::Status::BUSY, "The host has not enough memory to check a password. Try again later."};
    for (uint64 i = 0; i <= LoginBrake::PROMPT_FAILURES; ++i)
    {
        EXPECT_EQ(RefusalOf([&] { accounts.LogIn(Stranger(), "anna", PASSWORD); }), busy);
    }
    EXPECT_TRUE(sessions.List().empty());

    users.Update(UserName("anna"), {{}, {}, hash});
    EXPECT_TRUE(accounts.LogIn(Stranger(), "anna", PASSWORD).opened.has_value()) << "nobody has to wait";
}

TEST_F(AccountsTest, WarnThatAPasswordIsNotComparedWithAMissingDictionary)
{
    WordList const missing(scratch / "dictionary");
    Accounts withoutWords({users, sessions, hasher, missing, setupCode, trail, parts.isCurrent},
                          [this] { return nowUsec; });
    ZuTest::LogRecorder const log;

    withoutWords.AddUser(Program(Role::ADMINISTRATOR), UserName("anna"), Role::ADMINISTRATOR, PASSWORD);

    ASSERT_EQ(log.Lines().size(), 1U);
    EXPECT_EQ(log.Lines().at(0).text, "There is no dictionary at " + (scratch / "dictionary").string() +
                                          ", so a new password is not compared with it");
    EXPECT_TRUE(hasher.Verify(users.Find(UserName("anna"))->hash, PASSWORD)) << "the user is added all the same";
}

TEST_F(AccountsTest, LogOut)
{
    Add("anna", Role::ADMINISTRATOR);
    Caller const anna = LogIn("anna");
    trail.Clear();

    accounts.LogOut(anna);

    EXPECT_FALSE(sessions.IsCurrent(anna));
    EXPECT_THAT(trail.Lines(), ElementsAre("user anna | https 192.0.2.7 | logout |  |  | done"));
    EXPECT_EQ(RefusalOf([&] { accounts.LogOut(Program(Role::VIEWER)); }),
              (Refusal{Zu::Status::WRONG_STATE, "This request belongs to no session."}));
}

TEST_F(AccountsTest, ShowUsersTheirOwnSessionsAndAdministratorsAll)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::OPERATOR);
    Caller const anna = LogIn("anna");
    Caller const bert = LogIn("bert");
    Caller const again = LogIn("bert");
    trail.Clear();

    EXPECT_EQ(accounts.SessionsFor(anna).size(), 3U);
    EXPECT_EQ(accounts.SessionsFor(bert).size(), 2U);
    EXPECT_EQ(accounts.SessionsFor(Program(Role::ENGINEER)).size(), 0U);
    EXPECT_EQ(accounts.SessionsFor(Program(Role::ADMINISTRATOR)).size(), 3U);

    Refusal const missing{Zu::Status::NOT_FOUND, "There is no such session."};
    EXPECT_EQ(RefusalOf([&] { accounts.EndSession(bert, anna.sessionId); }), missing);
    EXPECT_EQ(RefusalOf([&] { accounts.EndSession(bert, ""); }), missing);
    accounts.EndSession(bert, again.sessionId);
    accounts.EndSession(anna, bert.sessionId);
    EXPECT_EQ(accounts.SessionsFor(anna).size(), 1U);
    ASSERT_EQ(trail.All().size(), 2U);
    EXPECT_EQ(trail.All().at(1).what, "end session");
    EXPECT_EQ(trail.All().at(1).before, R"({"session":")" + bert.sessionId + R"(","user":"bert"})");
}

TEST_F(AccountsTest, AddAUserAndNoteIt)
{
    Add("anna", Role::ADMINISTRATOR);
    EXPECT_THAT(
        trail.Lines(),
        ElementsAre(
            R"(token line 4 | https 192.0.2.9 | add user |  | {"enabled":true,"name":"anna","role":"administrator"} | done)"));
    User const anna = *users.Find(UserName("anna"));
    EXPECT_TRUE(hasher.Verify(anna.hash, PASSWORD));
    EXPECT_EQ(anna.created.size(), 20U);
}

TEST_F(AccountsTest, AddNoUserWithAPasswordAgainstTheRules)
{
    trail.Clear();
    EXPECT_EQ(RefusalOf([&] { Add("anna", Role::ADMINISTRATOR, "too short"); }),
              (Refusal{Zu::Status::BAD_ARGUMENT, "A password has at least 15 characters."}));
    EXPECT_FALSE(users.HasUsers());
    ASSERT_EQ(trail.All().size(), 1U);
    EXPECT_EQ(trail.All().at(0).result, "refused: A password has at least 15 characters.");
}

TEST_F(AccountsTest, EndTheSessionsOfAUserWhoIsChanged)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::OPERATOR);
    Caller const admin = Program(Role::ADMINISTRATOR);
    Accounts::Change const changes[] = {
        {Role::VIEWER, {}, {}, ""}, {{}, {}, "another horse battery", ""}, {{}, false, {}, ""}};
    char const* password = PASSWORD;
    for (Accounts::Change const& change : changes)
    {
        Caller const bert = LogIn("bert", password);
        EXPECT_TRUE(accounts.ChangeUser(admin, UserName("bert"), change).isRight);
        EXPECT_FALSE(sessions.IsCurrent(bert));
        password = "another horse battery";
        if (change.role.has_value())
        {
            password = PASSWORD;
        }
    }
    EXPECT_FALSE(users.Find(UserName("bert"))->isEnabled);

    accounts.ChangeUser(admin, UserName("bert"), {{}, true, {}, ""});
    Caller const bert = LogIn("bert", password);
    accounts.RemoveUser(admin, UserName("bert"));
    EXPECT_FALSE(sessions.IsCurrent(bert));
}

TEST_F(AccountsTest, NoteWhatWasChangedAndNeverAPassword)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::OPERATOR);
    trail.Clear();
    Caller const admin = Program(Role::ADMINISTRATOR);
    accounts.ChangeUser(admin, UserName("bert"), {Role::ENGINEER, true, "another horse battery", ""});
    accounts.RemoveUser(admin, UserName("bert"));
    EXPECT_THAT(
        trail.Lines(),
        ElementsAre(
            R"(token line 4 | https 192.0.2.9 | change user | {"enabled":true,"name":"bert","role":"operator"} | {"enabled":true,"hasNewPassword":true,"name":"bert","role":"engineer"} | done)",
            R"(token line 4 | https 192.0.2.9 | remove user | {"enabled":true,"name":"bert","role":"engineer"} |  | done)"));
}

TEST_F(AccountsTest, LetUsersChangeTheirOwnPasswordWithTheOldOne)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::VIEWER);
    Caller const bert = LogIn("bert");
    trail.Clear();

    EXPECT_FALSE(accounts.ChangeUser(bert, UserName("bert"), {{}, {}, "another horse battery", ""}).isRight);
    EXPECT_FALSE(
        accounts.ChangeUser(bert, UserName("bert"), {{}, {}, "another horse battery", OTHER_PASSWORD}).isRight);
    EXPECT_TRUE(sessions.IsCurrent(bert));
    EXPECT_EQ(trail.All().back().result, "refused: wrong old password");

    EXPECT_TRUE(accounts.ChangeUser(bert, UserName("BERT"), {{}, {}, "another horse battery", PASSWORD}).isRight);
    EXPECT_FALSE(sessions.IsCurrent(bert));
    LogIn("bert", "another horse battery");
}

TEST_F(AccountsTest, AskAdministratorsForTheirOwnOldPasswordToo)
{
    Add("anna", Role::ADMINISTRATOR);
    Caller const anna = LogIn("anna");
    EXPECT_FALSE(accounts.ChangeUser(anna, UserName("anna"), {{}, {}, "another horse battery", ""}).isRight);
    EXPECT_TRUE(accounts.ChangeUser(anna, UserName("anna"), {{}, {}, "another horse battery", PASSWORD}).isRight);
}

TEST_F(AccountsTest, SlowGuessesAtTheOldPasswordDown)
{
    Add("anna", Role::ADMINISTRATOR);
    Caller const anna = LogIn("anna");
    uint64 waitUsec = 0;
    for (unsigned i = 0; i < 20 && waitUsec == 0; ++i)
    {
        waitUsec =
            accounts.ChangeUser(anna, UserName("anna"), {{}, {}, "another horse battery", OTHER_PASSWORD}).waitUsec;
    }
    EXPECT_EQ(waitUsec, SECOND);
    EXPECT_EQ(trail.All().back().result, "refused: too many attempts");
}

TEST_F(AccountsTest, LetNobodyElseChangeUsers)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::ENGINEER);
    Caller const bert = LogIn("bert");
    Refusal const expected{Zu::Status::WRITE_ONLY_REFUSED,
                           "Only an administrator changes other users, roles and rights."};
    Accounts::Change const password{{}, {}, "another horse battery", PASSWORD};
    EXPECT_EQ(RefusalOf([&] { accounts.ChangeUser(bert, UserName("anna"), password); }), expected);
    EXPECT_EQ(RefusalOf([&] {
                  accounts.ChangeUser(bert, UserName("bert"), {Role::ADMINISTRATOR, {}, {}, ""});
              }),
              expected);
    EXPECT_EQ(RefusalOf([&] { accounts.ChangeUser(bert, UserName("bert"), {{}, true, {}, ""}); }), expected);
    EXPECT_EQ(RefusalOf([&] { accounts.ChangeUser(Program(Role::ENGINEER), UserName("bert"), password); }), expected);
    EXPECT_EQ(accounts.UsersFor(bert).size(), 1U);
    EXPECT_EQ(accounts.UsersFor(Program(Role::ENGINEER)).size(), 0U);
}

TEST_F(AccountsTest, TakeNoChangeOfAnAdministratorWhoHasBeenDemoted)
{
    Add("anna", Role::ADMINISTRATOR);
    Add("bert", Role::ADMINISTRATOR);
    Add("carl", Role::ADMINISTRATOR);
    Caller const anna = LogIn("anna");
    Caller const bert = LogIn("bert"); // both requests are admitted; anna's comes first

    accounts.ChangeUser(anna, UserName("bert"), {Role::VIEWER, {}, {}, ""});
    trail.Clear();

    Refusal const expected{Zu::Status::WRITE_ONLY_REFUSED, "The rights of this request have ended: log in again."};
    EXPECT_EQ(RefusalOf([&] { accounts.ChangeUser(bert, UserName("anna"), {Role::VIEWER, {}, {}, ""}); }), expected);
    EXPECT_EQ(RefusalOf([&] { accounts.RemoveUser(bert, UserName("anna")); }), expected);
    EXPECT_EQ(RefusalOf([&] { accounts.AddUser(bert, UserName("dora"), Role::ADMINISTRATOR, PASSWORD); }), expected);
    EXPECT_EQ(users.Find(UserName("anna"))->role, Role::ADMINISTRATOR);
    EXPECT_EQ(trail.All().at(0).result, "refused: The rights of this request have ended: log in again.");
}

TEST_F(AccountsTest, KeepTheLastAdministrator)
{
    Add("anna", Role::ADMINISTRATOR);
    Caller const anna = LogIn("anna");
    Refusal const expected{Zu::Status::WRONG_STATE,
                           "No administrator would be left who can log in: give another user this role first."};
    EXPECT_EQ(RefusalOf([&] { accounts.RemoveUser(anna, UserName("anna")); }), expected);
    EXPECT_EQ(RefusalOf([&] { accounts.ChangeUser(anna, UserName("anna"), {Role::VIEWER, {}, {}, ""}); }), expected);
    EXPECT_TRUE(sessions.IsCurrent(anna)) << "nothing has changed";
}

TEST_F(AccountsTest, MakeTheFirstAdministratorWithTheCode)
{
    std::string const code = OfferedCode();
    EXPECT_FALSE(accounts.SetUp(Stranger(), "AAAA-AAAA-AAAA-AAAA", "anna", PASSWORD).isRight);
    EXPECT_EQ(RefusalOf([&] { accounts.SetUp(Stranger(), code, "anna", "too short"); }).status,
              Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(RefusalOf([&] { accounts.SetUp(Stranger(), code, "", PASSWORD); }).status, Zu::Status::BAD_ARGUMENT);
    EXPECT_FALSE(users.HasUsers());

    EXPECT_TRUE(accounts.SetUp(Stranger(), code, "anna", PASSWORD).isRight);

    LogIn("anna");
    EXPECT_EQ(RefusalOf([&] { accounts.SetUp(Stranger(), code, "bert", PASSWORD); }),
              (Refusal{Zu::Status::WRONG_STATE,
                       "There is no code, or it has ended: start the host with --reset-administrator for a new one."}));
    EXPECT_EQ(trail.Lines().at(0), " | https 192.0.2.7 | first administrator |  |  | refused: wrong code");
    EXPECT_EQ(
        trail.Lines().at(1),
        R"( | https 192.0.2.7 | first administrator |  | {"enabled":true,"name":"anna","role":"administrator"} | done)");
}

TEST_F(AccountsTest, SlowGuessesAtTheCodeDown)
{
    std::string const code = OfferedCode();
    for (uint64 i = 0; i < LoginBrake::PROMPT_FAILURES; ++i)
    {
        EXPECT_EQ(accounts.SetUp(Stranger(), "AAAA-AAAA-AAAA-AAAA", "anna", PASSWORD).waitUsec, 0U);
    }
    EXPECT_EQ(accounts.SetUp(Stranger(), code, "anna", PASSWORD).waitUsec, SECOND);
    EXPECT_TRUE(accounts.SetUp(Stranger("192.0.2.8"), code, "anna", PASSWORD).isRight)
        << "another address need not wait";
}

TEST_F(AccountsTest, GiveALostAdministratorANewPassword)
{
    Add("anna", Role::ADMINISTRATOR, "a password that is lost");
    Add("bert", Role::VIEWER);
    Caller const anna = LogIn("anna", "a password that is lost");

    EXPECT_TRUE(accounts.SetUp(Stranger(), OfferedCode(), "Anna", PASSWORD).isRight);

    EXPECT_FALSE(sessions.IsCurrent(anna));
    LogIn("anna");
    EXPECT_EQ(users.List().size(), 2U);
}

TEST_F(AccountsTest, WriteNoPasswordIntoTheLog)
{
    ZuTest::LogRecorder const log;
    Add("anna", Role::ADMINISTRATOR);
    LogIn("anna");
    accounts.LogIn(Stranger(), "anna", OTHER_PASSWORD);
    accounts.LogIn(Stranger(), PASSWORD, OTHER_PASSWORD);
    for (ZuTest::LogLine const& line : log.Lines())
    {
        EXPECT_EQ(line.text.find("horse"), std::string::npos) << line.text;
        EXPECT_EQ(line.text.find("donkey"), std::string::npos) << line.text;
    }
}

} // namespace ZuHost
