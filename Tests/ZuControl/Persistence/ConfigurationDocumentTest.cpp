#include "ZuControl/Persistence/ConfigurationDocument.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>
#include <string>

namespace ZuControl
{

namespace
{

using Json = nlohmann::json;

/// The text of the thrown exception, or the whole parsed document, with the value and type of each number except -0.
template <typename Parse>
std::string Outcome(Parse&& parse)
{
    try
    {
        Json const document = parse();
        std::string types;
        Json const flat = document.flatten();
        for (auto const& [place, value] : flat.items())
        {
            auto const type =
                value == 0 && !value.is_number_float() ? Json::value_t::number_unsigned : value.type(); // -0
            types += place + " " + std::to_string(static_cast<int>(type)) + "\n";
        }
        return document.dump(-1, ' ', true) + "\n" + types;
    }
    catch (Json::exception const& exception)
    {
        return exception.what();
    }
}

std::string Ours(std::string const& text)
{
    return Outcome([&text]() -> Json { return ConfigurationDocument(text).ToJson(); });
}

std::string TheLibrarys(std::string const& text)
{
    return Outcome([&text] { return Json::parse(text); });
}

} // namespace

class ConfigurationTexts : public testing::TestWithParam<std::string>
{
};

TEST_P(ConfigurationTexts, AreWhatTheyAreToTheLibrary)
{
    EXPECT_EQ(Ours(GetParam()), TheLibrarys(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Sound, ConfigurationTexts,
                         testing::Values("{}", "[]", "null", "true", "false", "\"\"", "\"text\"", " \t\r\n[ 1 , 2 ]\n",
                                         "[[],{},[{}]]", R"({"b":1,"a":{"x":[1,"2",null,true,false]},"":3})",
                                         R"({"a":1,"a":2})", R"({"a":[1,2],"b":0,"a":{}})",
                                         R"({"a":{"x":1},"a":{"y":2}})", "\xef\xbb\xbf[1]"));

INSTANTIATE_TEST_SUITE_P(Numbers, ConfigurationTexts,
                         testing::Values("0", "1", "-1", "10", "65535", "999999999999999999", "1000000000000000000",
                                         "9223372036854775807", "9223372036854775808", "-9223372036854775808",
                                         "-9223372036854775809", "18446744073709551615", "18446744073709551616", "0.5",
                                         "-1.5e-3", "1E5", "1e+5", "2.5E300", "1e400", "-1e400", "01", "00", "-01", "-",
                                         "+1", "1.", ".5", "1e", "1e+", "1.2.3", "1-2", "1+", "0x10", "1 2",
                                         "[1,2.5,-3]", "[0123]", "NaN", "Infinity"));

INSTANTIATE_TEST_SUITE_P(Texts, ConfigurationTexts,
                         testing::Values(R"("a\"b\\c\/d\n\u00e4\ud83d\ude00")",
                                         "\"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\"", "\"\x7f\"", R"("\ud83d")",
                                         R"("\x")", R"("\u12")", "\"\xff\"", "\"\xc3\x28\"", "\"\xed\xa0\x80\"",
                                         "\"a\nb\"", std::string("\"a\0b\"", 5), R"("open)", R"("open\")", R"("open\)",
                                         R"({"\u0061":1,"a":2})", "{\"\xff\":1}", R"("\\")"));

INSTANTIATE_TEST_SUITE_P(Torn, ConfigurationTexts,
                         testing::Values("", " ", "{", "[", "}", "]", "[1", "[1,", "[1,]", "[,1]", "[1 2]", "{\"a\"",
                                         "{\"a\":", "{\"a\":1", "{\"a\":1,", "{\"a\":1,}", "{,}", "{1:2}", "{a:1}",
                                         "{\"a\" 1}", "{\"a\":1 \"b\":2}", "[1}", "{\"a\":1]", "[]]", "{}{}", "tru",
                                         "trueq", "nul", "falsee", "[true false]", "'a'", "[1]x",
                                         std::string("[1]\0x", 5), std::string("\0", 1), std::string("1\0", 2),
                                         "\"a\"\"b\"", "// 1\n1"));

TEST(ConfigurationDocument, AgreesWithTheLibraryOnSpoiledDocuments)
{
    uint32_t const seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    std::string const sound =
        R"({"version":"1","zu:control":{"enabled":true,"outputs":{"map":[{"outputId":12,"source":"s\u00e4\n"},)"
        R"({"outputId":0,"source":""}],"attributes":null},"parameters":{"low":-5,"high":0.25e1,"mask":18446744073709551615}}})";
    std::string const alphabet = "{}[]\",:\\0123456789.-+eE tfnul\n\x01\xc3\xa4\xff";

    for (int i = 0; i < 20000; ++i)
    {
        std::string text = sound;
        for (auto spoils = generator() % 3 + 1; spoils > 0; --spoils)
        {
            std::size_t const place = generator() % text.size();
            char const other = alphabet[generator() % alphabet.size()];
            switch (generator() % 4)
            {
            case 0:
                text[place] = other;
                break;
            case 1:
                text.insert(place, 1, other);
                break;
            case 2:
                text.erase(place, 1 + generator() % 3);
                break;
            default:
                text += text.substr(place, generator() % 20);
                break;
            }
        }
        ASSERT_EQ(Ours(text), TheLibrarys(text)) << text;
    }
}

TEST(ConfigurationDocument, TakesNoughtWithASignForNought)
{
    ConfigurationDocument document("[-0,-0.0]");

    EXPECT_EQ(document.ToJson().dump(), "[0,-0.0]");
}

TEST(ConfigurationDocument, ReadsAnyDepthWithoutRecursion)
{
    constexpr std::size_t DEPTH = 200000;

    ConfigurationDocument document(std::string(DEPTH, '[') + std::string(DEPTH, ']'));

    std::size_t depth = 1;
    for (Json const* level = &document.ToJson(); !level->empty(); level = &level->front())
    {
        ++depth;
    }
    EXPECT_EQ(depth, DEPTH);
}

TEST(ConfigurationDocument, FindsWhatStandsInItAlsoBeyondTheDepthThatIsReadFast)
{
    constexpr std::size_t DEPTH = 2000;
    std::string const text =
        R"({"deep":)" + std::string(DEPTH, '[') + std::string(DEPTH, ']') + R"(,"version":"1","list":[1,2]})";

    ConfigurationDocument const document(text);

    EXPECT_EQ(document.Root().Find("version")->Text(), "1");
    EXPECT_EQ(document.Root().Find("list")->Elements().size(), 2u);
    EXPECT_FALSE(document.Root().Find("other"));
}

} // namespace ZuControl
