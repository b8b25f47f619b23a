#include "Host/Security/PasswordRules.h"

#include "Host/Security/UserName.h"
#include "Host/Security/WordList.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <string>

namespace ZuHost
{

namespace
{

std::string FaultOf(std::string const& password, char const* user = "anna")
{
    return PasswordRules::FaultOf(PasswordRules::Prepared(password), UserName(user), WordList());
}

std::string Times(std::size_t count, std::string const& text)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
    {
        all += text;
    }
    return all;
}

} // namespace

TEST(PasswordRules, TakesLongPasswordsOfAnyKind)
{
    for (char const* const password :
         {"correct horse battery staple", "onlylowercaseletters", "8 1 0 4 7 3 9 9 2", "a1!a1!b2\"b2\"c3#",
          "\xC3\xA4\xC3\xB6\xC3\xBC \xC3\x9F \xE5\xB1\xB1\xE7\x94\xB0 f\xC3\xBCnfzehn"})
    {
        EXPECT_EQ(FaultOf(password), "") << password;
    }
}

TEST(PasswordRules, TakesSixtyFourCharactersOfFourBytes)
{
    std::string password;
    for (unsigned i = 0; i < 64; ++i)
    {
        password += {'\xF0', '\x9F', '\x90', static_cast<char>(0x80 + (i * 37) % 64)};
    }
    ASSERT_EQ(password.size(), 256U);
    EXPECT_EQ(FaultOf(password), "");
}

TEST(PasswordRules, CountsCharactersAndNotBytes)
{
    EXPECT_EQ(FaultOf("horse battery"), "A password has at least 15 characters.");
    EXPECT_EQ(FaultOf("horse batterie"), "A password has at least 15 characters.");
    EXPECT_EQ(FaultOf("horse batteries"), "");
    EXPECT_EQ(FaultOf("\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F\xC3\xA9\xC3\xA8\xC3\xAA\xC3\xAB"),
              "A password has at least 15 characters.");
    EXPECT_EQ(FaultOf(""), "A password has at least 15 characters.");
}

TEST(PasswordRules, RefusesPasswordsThatAreGuessedEarly)
{
    struct Row
    {
        std::string password;
        char const* fault;
    };
    constexpr char const* REPEATED = "The password repeats a shorter text, which is guessed early.";
    constexpr char const* SEQUENCE = "The password is a sequence of neighbouring characters, which is guessed early.";
    constexpr char const* NAMED =
        "The password contains the name of the user or of the product, which is guessed early.";
    constexpr char const* WORD = "The password is a word of the dictionary, which is guessed early.";
    Row const rows[] = {
        {std::string(15, 'a'), REPEATED}, {"PasswordpasswordPASS", REPEATED},
        {Times(8, "ab"), REPEATED},       {"abcdefghijklmnop", SEQUENCE},
        {"ponmlkjihgfedcba", SEQUENCE},   {"56789012345678", "A password has at least 15 characters."},
        {"345678901234567", SEQUENCE},    {"765432109876543", SEQUENCE},
        {"my ZuControl sensor", NAMED},   {"ANNA and the sensor", NAMED},
        {"accomplishments", WORD},        {"ACCOMPLISHMENTS", WORD},
        {"administrator12345", WORD},     {"!! sunflower 2026 !!", WORD},
    };
    for (Row const& row : rows)
    {
        EXPECT_EQ(FaultOf(row.password), row.fault) << row.password;
    }
}

TEST(PasswordRules, IgnoreNamesThatAreAPartOfManyWords)
{
    EXPECT_EQ(FaultOf("correct horse battery", "cor"), "");
    EXPECT_NE(FaultOf("correct horse battery", "Corr"), "");
}

TEST(PasswordRules, RefuseInvisibleCharacters)
{
    constexpr char const* FAULT =
        "The password has a control or invisible character, which not every keyboard can type.";
    EXPECT_EQ(FaultOf("correct horse\tbattery"), FAULT);
    EXPECT_EQ(FaultOf(std::string("correct horse\0battery", 21)), FAULT);
    EXPECT_EQ(FaultOf("correct horse\xE2\x80\x8B battery"), FAULT);
}

TEST(PasswordRules, PrepareOnePasswordFromTwoKeyboards)
{
    EXPECT_EQ(PasswordRules::Prepared("Zoe\xCC\x88"), PasswordRules::Prepared("Zo\xC3\xAB"));
    EXPECT_EQ(PasswordRules::Prepared("a\xC2\xA0z"), "a z");
    EXPECT_EQ(PasswordRules::Prepared(" a "), " a ") << "spaces at the ends belong to the password";
}

TEST(PasswordRules, PrepareNoHugeOrBrokenText)
{
    using ZuTest::Refusal;
    using ZuTest::RefusalOf;
    Refusal const tooLong{Zu::Status::BAD_ARGUMENT, "The password is longer than 256 bytes."};
    EXPECT_EQ(PasswordRules::Prepared(std::string(256, 'a')).size(), 256U);
    EXPECT_EQ(RefusalOf([] { PasswordRules::Prepared(std::string(257, 'a')); }), tooLong);
    EXPECT_EQ(RefusalOf([] { PasswordRules::Prepared(std::string(1'000'000, 'a')); }), tooLong);
    EXPECT_EQ(RefusalOf([] { PasswordRules::Prepared(Times(20, "\xEF\xB7\xBA")); }), tooLong) << "18 characters each";
    EXPECT_EQ(RefusalOf([] { PasswordRules::Prepared("secret \xFF"); }),
              (Refusal{Zu::Status::BAD_ARGUMENT, "The password is not UTF-8."}));
}

} // namespace ZuHost
