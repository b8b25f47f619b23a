#include "Host/Security/TokenStore.h"

#include "Host/Http/IGatekeeper.h"
#include "Host/Security/SecurityStore.h"
#include "Support/Latch.h"
#include "Support/MountedFolder.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"
#include "ZuRest/Caller.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <thread>

namespace ZuHost
{

namespace
{

using ZuCommon::Role;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

constexpr int64 NOW = 1'800'000'000; // divisible by 60

class TokenStoreTest : public testing::Test
{
protected:
    /// Begins anew, as the next start of the host.
    void Restart()
    {
        tokens.emplace(store, [this] { return nowSeconds; });
    }

    Proof Show(std::string const& secret)
    {
        Credentials credentials;
        std::string const header = "Bearer " + secret;
        credentials.authorization = header;
        return tokens->Find(credentials);
    }

    bool IsRight(std::string const& secret)
    {
        return Show(secret).caller.has_value();
    }

    static ZuRest::Caller CallerOf(std::string const& name, Role role = Role::VIEWER)
    {
        return {role, "token " + name, "", "", false};
    }

    int64 nowSeconds = NOW;
    ZuTest::ScratchFolder folder;
    SecurityStore store{folder / "security.zpset"};
    std::optional<TokenStore> tokens{std::in_place, store, [this] { return nowSeconds; }};
};

} // namespace

TEST_F(TokenStoreTest, MakesSecretsOf256RandomBits)
{
    std::set<std::string> secrets;
    for (unsigned i = 0; i < 20; ++i)
    {
        std::string const secret = tokens->Make("t" + std::to_string(i), Role::VIEWER, std::nullopt);
        EXPECT_EQ(secret.size(), TokenStore::PREFIX.size() + 43) << secret;
        EXPECT_TRUE(secret.starts_with(TokenStore::PREFIX)) << secret;
        EXPECT_EQ(secret.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"),
                  std::string::npos);
        secrets.insert(secret);
    }
    EXPECT_EQ(secrets.size(), 20U);
}

TEST_F(TokenStoreTest, KnowsATokenByItsSecret)
{
    EXPECT_FALSE(tokens->HasCallers());
    std::string const secret = tokens->Make("line 4", Role::OPERATOR, std::nullopt);

    Proof const proof = Show(secret);

    ASSERT_TRUE(proof.caller.has_value());
    EXPECT_EQ(proof.caller->name, "token line 4");
    EXPECT_EQ(proof.caller->role, Role::OPERATOR);
    EXPECT_TRUE(tokens->HasCallers());
    EXPECT_TRUE(tokens->IsCurrent(CallerOf("line 4", Role::OPERATOR)));
    EXPECT_FALSE(tokens->IsCurrent(CallerOf("line 4", Role::VIEWER))) << "a token of that name with another role";
    EXPECT_FALSE(tokens->IsCurrent(CallerOf("line 5")));
    EXPECT_FALSE(tokens->IsCurrent({Role::OPERATOR, "line 4", "", "", false}));
}

TEST_F(TokenStoreTest, TakesAnotherSecretForWrong)
{
    std::string secret = tokens->Make("a", Role::VIEWER, std::nullopt);
    secret.back() = secret.back() == 'A' ? 'B' : 'A';

    EXPECT_TRUE(Show(secret).isWrongSecret);
    EXPECT_FALSE(Show(secret).caller.has_value());
    EXPECT_TRUE(Show("zc_").isWrongSecret);
    EXPECT_FALSE(Show("").isWrongSecret) << "nothing is shown";
    EXPECT_FALSE(tokens->Find({}).isWrongSecret);
}

TEST_F(TokenStoreTest, KeepsTokensAndNoSecretBeyondItsEnd)
{
    std::string const secret = tokens->Make("a", Role::ENGINEER, NOW + 100);

    Restart();

    EXPECT_TRUE(IsRight(secret));
    TokenStore::Token const token = tokens->Get("a");
    EXPECT_EQ(token.role, Role::ENGINEER);
    EXPECT_EQ(token.madeSeconds, NOW);
    EXPECT_EQ(token.endSeconds, NOW + 100);
    EXPECT_EQ(ZuTest::BytesOf(folder / "security.zpset").find(secret.substr(3)), std::string::npos);
    EXPECT_EQ(store.Load("security/tokens").dump().find(secret.substr(3)), std::string::npos);
}

TEST_F(TokenStoreTest, RefusesOddNames)
{
    for (std::string const& name : {std::string(), std::string(65, 'a'), std::string("a/b"), std::string("a\nb"),
                                    std::string(" a"), std::string("a "), std::string("\xC3\xA4"), std::string("file"),
                                    std::string("."), std::string(".."), std::string("a\0b", 3), std::string("\xFF")})
    {
        EXPECT_EQ(RefusalOf([&] { tokens->Make(name, Role::VIEWER, std::nullopt); }).status, Zu::Status::BAD_ARGUMENT)
            << name;
    }
    EXPECT_NO_THROW(tokens->Make("Line 4_a-b.c", Role::VIEWER, std::nullopt));
    EXPECT_NO_THROW(tokens->Make(std::string(64, 'a'), Role::VIEWER, std::nullopt));
}

TEST_F(TokenStoreTest, RefusesTheSameNameAndMoreThanItsMost)
{
    tokens->Make("0", Role::VIEWER, std::nullopt);
    EXPECT_EQ(RefusalOf([&] { tokens->Make("0", Role::VIEWER, std::nullopt); }),
              (Refusal{Zu::Status::ALREADY_EXISTS, "There is a token '0' already: delete it first."}));

    for (std::size_t i = 1; i < TokenStore::MAX_TOKENS; ++i)
    {
        tokens->Make(std::to_string(i), Role::VIEWER, std::nullopt);
    }
    EXPECT_EQ(RefusalOf([&] { tokens->Make("one more", Role::VIEWER, std::nullopt); }),
              (Refusal{Zu::Status::FULL, "There are 64 tokens already: delete one."}));
    EXPECT_EQ(tokens->List().size(), TokenStore::MAX_TOKENS);
}

TEST_F(TokenStoreTest, BoundsTheEnd)
{
    constexpr char const* TEXT = "The end of a token lies in the future, and within ten years.";
    for (int64 const end : {NOW - 1, NOW, NOW + TokenStore::MAX_LIFE_SECONDS + 1, int64{0}, int64{-1}})
    {
        EXPECT_EQ(RefusalOf([&] { tokens->Make("a", Role::VIEWER, end); }), (Refusal{Zu::Status::BAD_ARGUMENT, TEXT}));
    }
    EXPECT_NO_THROW(tokens->Make("a", Role::VIEWER, NOW + TokenStore::MAX_LIFE_SECONDS));
}

TEST_F(TokenStoreTest, RevokesAtOnce)
{
    std::string const secret = tokens->Make("a", Role::VIEWER, std::nullopt);
    bool wasCurrent = true;
    Zu::Subscription const subscription =
        tokens->RevokedSignal().Subscribe([&] { wasCurrent = tokens->IsCurrent(CallerOf("a")); });

    tokens->Revoke("a");

    EXPECT_FALSE(wasCurrent);
    EXPECT_TRUE(Show(secret).isWrongSecret);
    EXPECT_FALSE(tokens->HasCallers());
    constexpr char const* TEXT = "There is no token 'a'.";
    EXPECT_EQ(RefusalOf([&] { tokens->Revoke("a"); }), (Refusal{Zu::Status::NOT_FOUND, TEXT}));
    EXPECT_EQ(RefusalOf([&] { tokens->Get("a"); }), (Refusal{Zu::Status::NOT_FOUND, TEXT}));
    Restart();
    EXPECT_FALSE(IsRight(secret));
}

TEST_F(TokenStoreTest, EndsATokenForGoodAlsoWhenTheClockIsSetBack)
{
    std::string const used = tokens->Make("used", Role::VIEWER, NOW + 100);
    nowSeconds = NOW + 99;
    EXPECT_TRUE(IsRight(used));
    EXPECT_TRUE(tokens->IsCurrent(CallerOf("used")));

    nowSeconds = NOW + 100;
    EXPECT_TRUE(Show(used).isWrongSecret);
    EXPECT_FALSE(tokens->IsCurrent(CallerOf("used")));
    EXPECT_TRUE(tokens->Get("used").hasEnded);
    EXPECT_TRUE(tokens->HasCallers()) << "an ended token does not open the service";

    nowSeconds = NOW;
    EXPECT_TRUE(Show(used).isWrongSecret) << "the clock is set back";
    tokens->Save();
    Restart();
    EXPECT_TRUE(Show(used).isWrongSecret) << "also after a restart";
}

TEST_F(TokenStoreTest, LosesNoTokenWhenTheClockIsSetBackAndForth)
{
    std::string const secret = tokens->Make("a", Role::VIEWER, NOW + 100);

    nowSeconds = 0; // a machine without a battery
    EXPECT_TRUE(IsRight(secret));
    nowSeconds = NOW + 50;
    EXPECT_TRUE(IsRight(secret));
}

TEST_F(TokenStoreTest, KeepsTheLastUseToAMinute)
{
    std::string const secret = tokens->Make("a", Role::VIEWER, std::nullopt);
    EXPECT_EQ(tokens->Get("a").lastUseSeconds, std::nullopt);
    nowSeconds = NOW + 119;

    Show(secret);
    EXPECT_EQ(tokens->Get("a").lastUseSeconds, NOW + 60);
    Restart();
    EXPECT_EQ(tokens->Get("a").lastUseSeconds, std::nullopt) << "a use alone writes nothing";

    Show(secret);
    tokens->Save();
    Restart();
    EXPECT_EQ(tokens->Get("a").lastUseSeconds, NOW + 60);
}

TEST_F(TokenStoreTest, ListsByName)
{
    tokens->Make("b", Role::VIEWER, std::nullopt);
    tokens->Make("a", Role::VIEWER, std::nullopt);
    tokens->Make("c", Role::VIEWER, std::nullopt);

    std::string names;
    for (TokenStore::Token const& token : tokens->List())
    {
        names += token.name;
    }
    EXPECT_EQ(names, "abc");
}

TEST_F(TokenStoreTest, LetsNothingInWhenItCannotReadItsTokens)
{
    std::string const secret = tokens->Make("a", Role::VIEWER, std::nullopt);
    nlohmann::json const good = store.Load("security/tokens");
    std::vector<nlohmann::json> damaged{"text", nlohmann::json::object(), {{"tokens", 1}}, {{"tokens", {1}}}};
    nlohmann::json const values{{"role", "god"}, {"sha256", "0"}, {"name", ""}, {"made", "x"}};
    for (auto const& [key, bad] : values.items())
    {
        nlohmann::json document = good;
        document["tokens"][0][key] = bad;
        damaged.push_back(document);
        document["tokens"][0].erase(key);
        damaged.push_back(document);
    }
    nlohmann::json twice = good;
    twice["tokens"].push_back(good["tokens"][0]);
    damaged.push_back(twice);
    for (nlohmann::json const& document : damaged)
    {
        store.Save("security/tokens", document);
        Restart();

        EXPECT_TRUE(tokens->Fault().starts_with("The tokens of programs cannot be read, so none is accepted: "))
            << document << tokens->Fault();
        EXPECT_TRUE(tokens->HasCallers()) << "the service stays closed";
        EXPECT_TRUE(Show(secret).isWrongSecret);
        EXPECT_EQ(RefusalOf([&] { tokens->List(); }).text, tokens->Fault());
        EXPECT_EQ(RefusalOf([&] { tokens->Make("b", Role::VIEWER, std::nullopt); }).text, tokens->Fault());
        EXPECT_EQ(RefusalOf([&] { tokens->Revoke("a"); }).text, tokens->Fault());
        tokens->Save();
        EXPECT_EQ(store.Load("security/tokens"), document) << "nothing is lost";
    }
}

TEST_F(TokenStoreTest, LetsNothingInWhenItsArchiveIsDamaged)
{
    ZuTest::WriteBytes(folder / "security.zpset", "no archive");

    Restart();

    EXPECT_NE(tokens->Fault().find("security.zpset"), std::string::npos) << tokens->Fault();
    EXPECT_TRUE(tokens->HasCallers());
}

TEST_F(TokenStoreTest, ServesRequestsWhileTokensComeAndGo)
{
    std::string const secret = tokens->Make("stays", Role::VIEWER, std::nullopt);
    std::atomic<bool> isDone = false;
    std::atomic<bool> isAlwaysRight = true;
    std::thread reader([&] {
        while (!isDone)
        {
            isAlwaysRight = isAlwaysRight && IsRight(secret) && tokens->IsCurrent(CallerOf("stays"));
        }
    });
    for (unsigned i = 0; i < 20; ++i)
    {
        tokens->Make("goes", Role::VIEWER, std::nullopt);
        tokens->Revoke("goes");
    }
    isDone = true;
    reader.join();
    EXPECT_TRUE(isAlwaysRight);
}

TEST(TokenStoreOnAFullDisk, RefusesToMakeAndRevokesNevertheless)
{
    ZuTest::MountedFolder const disk("64k");
    if (!disk.IsMounted())
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    SecurityStore store(disk.Path() / "security.zpset");
    TokenStore tokens(store);
    std::string const secret = tokens.Make("a", Role::VIEWER, std::nullopt);
    ZuTest::WriteBytes(disk.Path() / "filler", std::string(64 * 1024, 'x'));

    EXPECT_EQ(RefusalOf([&] { tokens.Make("b", Role::VIEWER, std::nullopt); }).status, Zu::Status::FAILURE);
    EXPECT_EQ(tokens.List().size(), 1U) << "no token that would be gone after a restart";

    EXPECT_EQ(RefusalOf([&] { tokens.Revoke("a"); }).status, Zu::Status::FAILURE);
    Credentials credentials;
    std::string const header = "Bearer " + secret;
    credentials.authorization = header;
    EXPECT_FALSE(tokens.Find(credentials).caller.has_value()) << "ended, although the disk is full";
    EXPECT_TRUE(tokens.Get("a").hasEnded);

    std::filesystem::remove(disk.Path() / "filler");
    tokens.Revoke("a");
    EXPECT_TRUE(TokenStore(store).List().empty());
}

} // namespace ZuHost
