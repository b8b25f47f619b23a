#include "ZuRest/JsonText.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuRest
{

TEST(JsonText, ReadsUpToItsDepth)
{
    std::string const deepest = std::string(64, '[') + std::string(64, ']');

    EXPECT_EQ(JsonText::Read(deepest).dump(), deepest);
    EXPECT_EQ(ZuTest::RefusalOf([&] { JsonText::Read("[" + deepest + "]"); }),
              (ZuTest::Refusal{-984, "The body is nested deeper than 64 levels."}));
    EXPECT_EQ(ZuTest::RefusalOf([&] { JsonText::Read(std::string(900'000, '[')); }),
              (ZuTest::Refusal{-984, "The body is nested deeper than 64 levels."}));
}

TEST(JsonText, DoesNotCountBracketsInStrings)
{
    std::string const text = R"(["\"[[[[\\", ")" + std::string(100, '{') + R"("])";

    EXPECT_EQ(JsonText::Read(text).size(), 2U);
}

TEST(JsonText, RefusesWhatIsNoJson)
{
    for (std::string const& text :
         {std::string(), std::string("{"), std::string("{\"a\" 1}"), std::string("nul"), std::string("[1]]"),
          std::string("\"\xFF\""), std::string("1e999"), std::string("\"\\"), std::string("{\"a\":1}\0", 8)})
    {
        ZuTest::Refusal const refusal = ZuTest::RefusalOf([&] { JsonText::Read(text); });
        EXPECT_EQ(refusal.status, -984) << text;
        EXPECT_TRUE(refusal.text.starts_with("The body is not valid JSON: ")) << refusal.text;
    }
}

TEST(JsonText, RefusesWhatIsTooLong)
{
    std::string const longest = '"' + std::string(1024 * 1024 - 2, 'x') + '"';

    EXPECT_TRUE(JsonText::Read(longest).is_string());
    EXPECT_EQ(ZuTest::RefusalOf([&] { JsonText::Read(longest + ' '); }),
              (ZuTest::Refusal{-984, "The body is longer than 1048576 bytes."}));
}

TEST(JsonText, ReplacesWhatIsNoUtf8)
{
    EXPECT_EQ(JsonText::Write(nlohmann::json{{"a", "\xFF"}}), "{\"a\":\"\xEF\xBF\xBD\"}");
}

} // namespace ZuRest
