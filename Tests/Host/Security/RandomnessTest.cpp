#include "Host/Security/Randomness.h"

#include <gtest/gtest.h>

#include <set>

namespace ZuHost
{

TEST(Randomness, MakesSecretsOf256Bits)
{
    std::set<std::string> secrets;
    for (unsigned i = 0; i < 100; ++i)
    {
        std::string const secret = Randomness::Secret();
        EXPECT_EQ(secret.size(), 43U);
        EXPECT_EQ(secret.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"),
                  secret.npos);
        secrets.insert(secret);
    }
    EXPECT_EQ(secrets.size(), 100U);
}

TEST(Randomness, DrawsEveryCharacterOfAnAlphabet)
{
    std::string const text = Randomness::Characters(1000, "abc");
    EXPECT_EQ(text.size(), 1000U);
    EXPECT_EQ(std::set<char>(text.begin(), text.end()), (std::set<char>{'a', 'b', 'c'}));
}

TEST(Randomness, MakesFingerprintsThatStayTheSame)
{
    EXPECT_EQ(Randomness::Fingerprint(""), "0e5751c026e543b2e8ab2eb06099daa1d1e5df47778f7787faab45cdf12fe3a8");
    EXPECT_EQ(Randomness::Fingerprint("abc"), "bddd813c634239723171ef3fee98579b94964e3bb1cb3e427262c8c068d52319");
}

TEST(Randomness, ComparesTextsOfAnyLength)
{
    EXPECT_TRUE(Randomness::AreEqual("", ""));
    EXPECT_TRUE(Randomness::AreEqual("abc", "abc"));
    EXPECT_FALSE(Randomness::AreEqual("abc", "abd"));
    EXPECT_FALSE(Randomness::AreEqual("abc", "abcd"));
}

} // namespace ZuHost
