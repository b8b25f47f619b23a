#include "Host/Audit/TrailText.h"

#include "Host/Audit/Sha256.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuHost::TrailText
{

TEST(TrailText, KnowsTheNamesOfSecrets)
{
    for (char const* const name :
         {"password", "Password", "PASSWORD", "newPassword", "new_password", "api-key", "privateKey", "key", "token",
          "accessToken", "secret", "clientSecret", "code", "oneTimeCode", "KEY_"})
    {
        EXPECT_TRUE(IsSecretName(name)) << name;
    }
    for (char const* const name : {"", "port", "monkey", "barcode", "keyboard", "tokens left", "codeLength", "_"})
    {
        EXPECT_FALSE(IsSecretName(name)) << name;
    }
}

TEST(TrailText, MasksSecretsAtAnyDepth)
{
    EXPECT_EQ(Parameters(R"({"user":"anna","password":"p1","list":[{"key":{"a":1}},[{"token":5}]],"port":1})"),
              R"({"list":[{"key":"***"},[{"token":"***"}]],"password":"***","port":1,"user":"anna"})");
}

TEST(TrailText, KeepsOnlyTheSizeOfTextThatBeginsLikeJsonButIsNone)
{
    EXPECT_EQ(Parameters(R"( {"password":"p1")"), "(17 bytes)");
    EXPECT_EQ(Parameters(std::string(100, '[') + std::string(100, ']')), "(200 bytes)");
}

TEST(TrailText, KeepsOnlyTheSizeOfAFile)
{
    EXPECT_EQ(Parameters(std::string_view("SQLite format 3\0...", 19)), "(19 bytes)");
}

TEST(TrailText, KeepsOtherTextOnOneLine)
{
    EXPECT_EQ(Parameters(""), "");
    EXPECT_EQ(Parameters("5"), "5");
    EXPECT_EQ(Parameters("a\nb\x1b[0m\xff"), "a\\nb\\x1b[0m\\xff");
    EXPECT_EQ(Name("x\r\ny"), "x\\r\\ny");
}

TEST(TrailText, CutsLongTextWithAMarkAndNotWithinACharacter)
{
    std::string const longText = Parameters("x" + [] {
        std::string text;
        for (int i = 0; i < 4000; ++i)
        {
            text += "\xc3\xa4"; // a letter of two bytes
        }
        return text;
    }());
    EXPECT_LE(longText.size(), MAX_PARAMETER_BYTES);
    EXPECT_TRUE(longText.ends_with("\xa4... (4097 bytes)")) << longText.substr(longText.size() - 30);

    EXPECT_TRUE(Parameters("{\"a\":\"" + std::string(5000, 'x') + "\"}").ends_with("xxx... (5008 bytes)"));
    EXPECT_EQ(Name(std::string(600, 'n')).size(), MAX_NAME_BYTES);
}

TEST(TrailText, ShowsOnlyTheMembersThatDiffer)
{
    Difference const difference = DifferenceOf(
        R"({"a":1,"b":{"c":2,"d":3},"gone":1,"list":[1,2],"_links":{"x":1},"same":[{"k":1}],"pairs":[{"k":1},{"k":2}]})",
        R"({"a":1,"b":{"c":5,"d":3},"new":2,"list":[1],"_links":{"x":2},"same":[{"k":1}],"pairs":[{"k":1},{"k":3}]})");
    EXPECT_EQ(difference.before, R"({"b":{"c":2},"gone":1,"list":[1,2],"pairs":{"1":{"k":2}}})");
    EXPECT_EQ(difference.after, R"({"b":{"c":5},"list":[1],"new":2,"pairs":{"1":{"k":3}}})");
}

TEST(TrailText, MasksSecretsThatDiffer)
{
    Difference const difference = DifferenceOf(R"({"password":"a","b":1})", R"({"password":"b","b":1})");
    EXPECT_EQ(difference.before, R"({"password":"***"})");
    EXPECT_EQ(difference.after, R"({"password":"***"})");
}

TEST(TrailText, KeepsBothTextsWhereOneIsNoJson)
{
    Difference const difference = DifferenceOf("", R"({"port":1})");
    EXPECT_EQ(difference.before, "");
    EXPECT_EQ(difference.after, R"({"port":1})");
}

TEST(TrailText, WritesTimesInUtcWithMicroseconds)
{
    EXPECT_EQ(TimeOf(0), "1970-01-01T00:00:00.000000Z");
    EXPECT_EQ(TimeOf(1'767'225'599'000'007), "2025-12-31T23:59:59.000007Z");
    EXPECT_EQ(TimeOf(-1), "1969-12-31T23:59:59.999999Z");
}

TEST(Sha256, IsTheOneOfTheStandard)
{
    EXPECT_EQ(Sha256Hex("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

} // namespace ZuHost::TrailText
