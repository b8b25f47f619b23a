#include "ZuControl/Persistence/ConfigurationDocument.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>
#include <string>

namespace ZuControl
{

namespace
{

using Json = nlohmann::json;
using Zu::Properties::JsonSerializer;

struct Point : Zu::Params::Group
{
    Point()
    {
        Register("x", "X", x);
        Register("name", "Name", name);
    }

    Zu::Params::Value<uint16> x;
    Zu::Params::Value<std::string> name;
};

/// A value of each kind.
struct Everything : Zu::Params::Group
{
    Everything()
    {
        Register("flag", "", flag);
        Register("text", "", text);
        Register("real", "", real);
        Register("small", "", small);
        Register("medium", "", medium);
        Register("large", "", large);
        Register("whole", "", whole);
        Register("point", "", point);
        Register("points", "", points);
        Structure::Register("texts", texts);
    }

    Zu::Params::Value<bool> flag;
    Zu::Params::Value<std::string> text;
    Zu::Params::Value<double> real;
    Zu::Params::Value<uint16> small;
    Zu::Params::Value<uint32> medium;
    Zu::Params::Value<uint64> large;
    Zu::Params::Value<int32> whole;
    Point point;
    Zu::Params::Array<Point> points;
    Zu::Properties::Value<std::vector<std::string>> texts;
};

/// The stored values and the text of the exception, if any.
template <typename Read>
std::string Outcome(Read&& read)
{
    Everything record;
    record.points.Resize(1);
    record.points.At(0).name = "there before";
    std::string thrown = "nothing";
    try
    {
        read(record);
    }
    catch (Zu::Exception const& exception)
    {
        thrown = std::to_string(exception.Status()) + " " + exception.what();
    }
    catch (Json::exception const& exception)
    {
        thrown = exception.what();
    }
    return JsonSerializer::Serialize(record).dump() + "\n" + thrown;
}

std::string ReadByPart(std::string const& text)
{
    return Outcome([&text](Everything& record) { ConfigurationDocument(text).Root().ReadInto(record); });
}

std::string ReadBySerializer(std::string const& text)
{
    return Outcome([&text](Everything& record) { JsonSerializer::Deserialize(record, Json::parse(text)); });
}

std::string RefusalOf(DocumentPart const& part)
{
    try
    {
        part.Elements();
    }
    catch (Json::exception const& exception)
    {
        return exception.what();
    }
    return {};
}

} // namespace

class DocumentPartRecords : public testing::TestWithParam<std::string>
{
};

TEST_P(DocumentPartRecords, AreReadAsTheSerializerReadsThem)
{
    EXPECT_EQ(ReadByPart(GetParam()), ReadBySerializer(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    Whole, DocumentPartRecords,
    testing::Values("{}", R"({"other":[1,{"x":2}],"flag":true})",
                    R"({"flag":true,"text":"s\u00e4\n","real":-2.5e-3,"small":65535,"medium":4294967295,)"
                    R"("large":18446744073709551615,"whole":-2147483648,"point":{"x":7,"name":"p"},)"
                    R"("points":[{"x":1},{"name":"b"},{}],"texts":["a","b"]})",
                    R"({"small":1,"small":2,"point":{"x":1},"point":{"name":"later"}})",
                    R"({"points":[],"texts":[]})"));

INSTANTIATE_TEST_SUITE_P(OfOtherKinds, DocumentPartRecords,
                         testing::Values("[]", "null", "3", "\"text\"", R"({"flag":0})", R"({"flag":"x"})",
                                         R"({"flag":null})", R"({"text":1})", R"({"text":["a"]})", R"({"real":3})",
                                         R"({"real":-3})", R"({"real":true})", R"({"real":"1"})", R"({"small":true})",
                                         R"({"small":"1"})", R"({"small":null})", R"({"small":{}})", R"({"point":[]})",
                                         R"({"point":null})", R"({"points":{}})", R"({"points":3})",
                                         R"({"points":[3]})", R"({"points":[{"x":5},{"x":"6"},{"x":7}]})",
                                         R"({"texts":"a"})", R"({"texts":{}})", R"({"texts":["a",1]})",
                                         R"({"text":"stored","point":{"x":[]},"points":[{"x":9}]})"));

INSTANTIATE_TEST_SUITE_P(NumbersThatDoNotFit, DocumentPartRecords,
                         testing::Values(R"({"small":65536})", R"({"small":-1})", R"({"medium":4294967296})",
                                         R"({"medium":-1})", R"({"large":-1})", R"({"large":18446744073709551616})",
                                         R"({"whole":2147483648})", R"({"whole":18446744073709551615})",
                                         R"({"small":1.9})", R"({"small":-0.5})", R"({"small":65536.0})",
                                         R"({"whole":-1e300})", R"({"medium":-0})"));

TEST(DocumentPart, ReadsSpoiledRecordsAsTheSerializerReadsThem)
{
    uint32_t const seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    std::string const values[] = {
        "null",      "true", "-1",       "0",  "70000", "2.5",          "1e300",
        R"("text")", "{}",   R"(["a"])", "[]", "[1]",   R"([{"x":1}])", R"({"x":3,"name":"n"})"};
    std::string const keys[] = {"flag",  "text",  "real",  "small",  "medium",
                                "large", "whole", "point", "points", "texts"};

    for (int i = 0; i < 5000; ++i)
    {
        std::string text = "{";
        for (auto members = generator() % 4; members > 0; --members)
        {
            text += "\"" + keys[generator() % std::size(keys)] + "\":" + values[generator() % std::size(values)] + ",";
        }
        text += R"("":0})";
        ASSERT_EQ(ReadByPart(text), ReadBySerializer(text)) << text;
    }
}

TEST(DocumentPart, FindsTheLaterOfTwoMembersWithOneKey)
{
    ConfigurationDocument const document(R"({"a":"first","b":1,"a":"second"})");

    EXPECT_EQ(document.Root().Find("a")->Text(), "second");
    EXPECT_FALSE(document.Root().Find("c"));
    EXPECT_FALSE(document.Root().Find("b")->Find("a"));
}

TEST(DocumentPart, HasTheElementsOfAnArrayInOrder)
{
    ConfigurationDocument const document(R"(["a","b"])");

    std::vector<DocumentPart> const elements = document.Root().Elements();

    ASSERT_EQ(elements.size(), 2u);
    EXPECT_EQ(elements[0].Text(), "a");
    EXPECT_EQ(elements[1].Text(), "b");
    EXPECT_TRUE(document.Root().IsArray());
}

TEST(DocumentPart, HasNoElementsWhereNullOrAnEmptyObjectStands)
{
    EXPECT_TRUE(ConfigurationDocument("null").Root().Elements().empty());
    EXPECT_TRUE(ConfigurationDocument("{}").Root().Elements().empty());
    EXPECT_FALSE(ConfigurationDocument("{}").Root().IsArray());
}

TEST(DocumentPart, RefusesElementsOfWhatIsNoArrayAsTheLibraryDoes)
{
    for (std::string const text : {R"({"a":1})", "\"text\"", "3", "true"})
    {
        Json const json = Json::parse(text);
        EXPECT_NE(RefusalOf(DocumentPart(json)), "");
        EXPECT_EQ(RefusalOf(ConfigurationDocument(text).Root()), RefusalOf(DocumentPart(json))) << text;
    }
}

TEST(DocumentPart, RefusesTheTextOfWhatIsNone)
{
    ConfigurationDocument const document("[1]");

    EXPECT_THROW(document.Root().Text(), Json::type_error);
}

} // namespace ZuControl
