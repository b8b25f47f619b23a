#include "Host/Security/WordList.h"

#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(WordList, FindsWordsOfTheSystem)
{
    WordList const words;

    ASSERT_TRUE(words.Exists()) << words.Path();
    EXPECT_TRUE(words.Contains("password"));
    EXPECT_TRUE(words.Contains("accomplishments"));
}

TEST(WordList, FindsNoOtherTexts)
{
    WordList const words;
    for (std::string const& text :
         {std::string(), std::string("qxzqxzqxz"), std::string("zzzzzzzzz"), std::string("password\0", 9),
          std::string(31, 'z'), std::string(32, 'a'), std::string(100'000, 'a'), std::string("\xC3\xBF\xC3\xBF")})
    {
        EXPECT_FALSE(words.Contains(text)) << text.substr(0, 40);
    }
}

TEST(WordList, FindsNothingWithoutADictionary)
{
    ZuTest::ScratchFolder const scratch;
    WordList const none(scratch / "nothing");
    EXPECT_FALSE(none.Exists());
    EXPECT_FALSE(none.Contains("password"));

    ZuTest::WriteBytes(scratch / "broken.pwd", "no words");
    ZuTest::WriteBytes(scratch / "broken.pwi", "no index");
    WordList const broken(scratch / "broken");
    EXPECT_TRUE(broken.Exists());
    EXPECT_FALSE(broken.Contains("password"));
}

} // namespace ZuHost
