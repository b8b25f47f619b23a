#include "ZuRest/JsonText.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <bit>
#include <random>

namespace ZuRest
{

using Json = nlohmann::json;

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

namespace
{

/// Documents of every kind, drawn at random: bytes that are no UTF-8 among the texts, and every number.
class Dice final
{
public:
    Json Document(unsigned depth)
    {
        switch (Below(depth == 0 ? 7 : 9))
        {
        case 0:
            return nullptr;
        case 1:
            return Below(2) == 0;
        case 2:
            return static_cast<int64>(generator()) >> Below(64);
        case 3:
            return static_cast<uint64>(generator()) >> Below(64);
        case 4:
            return std::bit_cast<double>(generator());
        case 5:
            return static_cast<double>(Below(100'000)) / 100;
        case 6:
            return Text();
        case 7:
            return Array(depth - 1);
        default:
            return Object(depth - 1);
        }
    }

private:
    unsigned Below(unsigned bound)
    {
        return static_cast<unsigned>(generator() % bound);
    }

    std::string Text()
    {
        bool const isPlain = Below(2) == 0;
        std::string text(Below(20), ' ');
        for (char& one : text)
        {
            one = static_cast<char>(isPlain ? 'a' + Below(26) : Below(256));
        }
        return Below(4) == 0 ? text + "\xC3\xA4\xE2\x82\xAC" : text;
    }

    Json Array(unsigned depth)
    {
        Json array = Json::array();
        for (unsigned i = Below(5); i > 0; --i)
        {
            array.push_back(Document(depth));
        }
        return array;
    }

    Json Object(unsigned depth)
    {
        Json object = Json::object();
        for (unsigned i = Below(5); i > 0; --i)
        {
            object[Text()] = Document(depth);
        }
        return object;
    }

    std::mt19937_64 generator{20261121};
};

} // namespace

TEST(JsonText, WritesByteForByteWhatTheLibraryDumps)
{
    Dice dice;
    for (unsigned i = 0; i < 20'000; ++i)
    {
        Json const document = dice.Document(4);
        ASSERT_EQ(JsonText::Write(document), document.dump(-1, ' ', false, Json::error_handler_t::replace));
    }
    for (unsigned byte = 0; byte < 256; ++byte)
    {
        Json const document(std::string(1, static_cast<char>(byte)) + "a");
        EXPECT_EQ(JsonText::Write(document), document.dump(-1, ' ', false, Json::error_handler_t::replace)) << byte;
    }
    for (Json const& document : {Json::binary({1, 2}), Json(Json::value_t::discarded), Json(-0.0), Json(1e300)})
    {
        EXPECT_EQ(JsonText::Write(document), document.dump(-1, ' ', false, Json::error_handler_t::replace));
    }
}

} // namespace ZuRest
