#include "ZuApi/JsonSerializer.h"

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/Params/Palette.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Zu::Properties
{

using ZuTest::Colour;
using ZuTest::Palette;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::Stroke;
using Json = nlohmann::json;

namespace
{

/// One value of each type.
struct Everything : Structure
{
    Everything() : Structure(true)
    {
        Register("bool", boolean);
        Register("string", text);
        Register("double", number);
        Register("uint16", small);
        Register("uint32", middle);
        Register("uint64", large);
        Register("int32", signedOne);
        Register("texts", texts);
        Register("colours", colours);
    }

    Value<bool> boolean;
    Value<std::string> text;
    Value<double> number;
    Value<uint16> small;
    Value<uint32> middle;
    Value<uint64> large;
    Value<int32> signedOne;
    Value<std::vector<std::string>> texts;
    Value<std::vector<Colour>> colours;
};

struct DocumentCase
{
    char const* name;
    char const* document;
};

class EveryType : public testing::TestWithParam<DocumentCase>
{
};

/// Runs `action`, which must throw a type error of the JSON library, and returns the text of the error.
template <typename Action>
std::string TypeErrorOf(Action action)
{
    try
    {
        action();
    }
    catch (Json::type_error const& error)
    {
        return error.what();
    }
    return "";
}

} // namespace

TEST_P(EveryType, GoesInAndComesOutUnchanged)
{
    Json const document = Json::parse(GetParam().document);
    Everything everything;

    JsonSerializer::Validate(everything, document);
    JsonSerializer::Deserialize(everything, document);

    EXPECT_EQ(JsonSerializer::Serialize(everything), document);
}

INSTANTIATE_TEST_SUITE_P(
    Extremes, EveryType,
    testing::Values(DocumentCase{"Smallest", R"({"bool": false, "string": "", "double": -1.5e300, "uint16": 0,
                                                 "uint32": 0, "uint64": 0, "int32": -2147483648, "texts": [],
                                                 "colours": []})"},
                    DocumentCase{"Largest", R"({"bool": true, "string": "a\u0000b \"%s\"", "double": 1.5e300,
                                                "uint16": 65535, "uint32": 4294967295,
                                                "uint64": 18446744073709551615, "int32": 2147483647,
                                                "texts": ["", "two"], "colours": [0, 255]})"}),
    [](auto const& tested) { return std::string(tested.param.name); });

struct NumberCase
{
    char const* name;
    char const* key;
    char const* number;
    char const* converted; // null: refused even without a validation
    char const* refusal;   // of the validation; null: none
};

class ForeignNumber : public testing::TestWithParam<NumberCase>
{
};

TEST_P(ForeignNumber, IsValidatedWholeOrNotAtAll)
{
    NumberCase const& given = GetParam();
    Everything everything;
    Json const before = JsonSerializer::Serialize(everything);

    Refusal const refusal = RefusalOf([&] {
        JsonSerializer::Validate(everything, Json{{given.key, Json::parse(given.number)}});
    });

    EXPECT_EQ(refusal, given.refusal == nullptr ? (Refusal{1, ""}) : (Refusal{-997, given.refusal}));
    EXPECT_EQ(JsonSerializer::Serialize(everything), before);
}

TEST_P(ForeignNumber, IsConvertedWithoutValidation)
{
    NumberCase const& given = GetParam();
    Everything everything;
    Json const before = JsonSerializer::Serialize(everything);

    Refusal const refusal = RefusalOf([&] {
        JsonSerializer::Deserialize(everything, Json{{given.key, Json::parse(given.number)}});
    });

    EXPECT_EQ(refusal, given.converted != nullptr ? (Refusal{1, ""}) : (Refusal{-997, given.refusal}));
    Json const expected = given.converted != nullptr ? Json::parse(given.converted) : before.at(given.key);
    EXPECT_EQ(JsonSerializer::Serialize(everything).at(given.key), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Each, ForeignNumber,
    testing::Values(
        NumberCase{"NegativeForUint16", "uint16", "-1", "65535", "-1 is not a whole number in the range of uint16."},
        NumberCase{"LargeForUint16", "uint16", "70000", "4464", "70000 is not a whole number in the range of uint16."},
        NumberCase{"FractionForUint16", "uint16", "1.5", "1", "1.5 is not a whole number in the range of uint16."},
        NumberCase{"FractionBelowZeroForUint16", "uint16", "-0.5", "0",
                   "-0.5 is not a whole number in the range of uint16."},
        NumberCase{"LargeFractionForUint16", "uint16", "65536.0", nullptr,
                   "65536.0 is not a whole number in the range of uint16."},
        NumberCase{"WholeFractionForUint16", "uint16", "7.0", "7", nullptr},
        NumberCase{"LargeForUint32", "uint32", "4294967296", "0",
                   "4294967296 is not a whole number in the range of uint32."},
        NumberCase{"NegativeForUint64", "uint64", "-1", "18446744073709551615",
                   "-1 is not a whole number in the range of uint64."},
        NumberCase{"HugeForUint64", "uint64", "1e300", nullptr, "1e+300 is not a whole number in the range of uint64."},
        NumberCase{"JustTooLargeForUint64", "uint64", "18446744073709551616.0", nullptr,
                   "1.8446744073709552e+19 is not a whole number in the range of uint64."},
        NumberCase{"LargeForInt32", "int32", "2147483648", "-2147483648",
                   "2147483648 is not a whole number in the range of int32."},
        NumberCase{"SmallForInt32", "int32", "-2147483649", "2147483647",
                   "-2147483649 is not a whole number in the range of int32."},
        NumberCase{"IntegerForDouble", "double", "3", "3", nullptr}),
    [](auto const& tested) { return std::string(tested.param.name); });

struct TypeCase
{
    char const* name;
    char const* key;
    char const* value;
    char const* text;
};

class WrongType : public testing::TestWithParam<TypeCase>
{
};

TEST_P(WrongType, RaisesTheTypeErrorOfTheJsonLibrary)
{
    TypeCase const& given = GetParam();
    Everything everything;
    Json const document{{given.key, Json::parse(given.value)}};

    EXPECT_EQ(TypeErrorOf([&] { JsonSerializer::Validate(everything, document); }), given.text);
    EXPECT_EQ(TypeErrorOf([&] { JsonSerializer::Deserialize(everything, document); }), given.text);
}

INSTANTIATE_TEST_SUITE_P(
    Each, WrongType,
    testing::Values(TypeCase{"StringForNumber", "uint16", R"("5")",
                             "[json.exception.type_error.302] type must be number, but is string"},
                    TypeCase{"StringForDouble", "double", R"("5")",
                             "[json.exception.type_error.302] type must be number, but is string"},
                    TypeCase{"NullForNumber", "int32", "null",
                             "[json.exception.type_error.302] type must be number, but is null"},
                    TypeCase{"NumberForString", "string", "5",
                             "[json.exception.type_error.302] type must be string, but is number"},
                    TypeCase{"NumberForBoolean", "bool", "1",
                             "[json.exception.type_error.302] type must be boolean, but is number"},
                    TypeCase{"StringForArray", "texts", R"("a")",
                             "[json.exception.type_error.302] type must be array, but is string"},
                    TypeCase{"NumberInArrayOfStrings", "texts", "[1]",
                             "[json.exception.type_error.302] type must be string, but is number"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(JsonSerializer, RaisesATypeErrorForWhatIsNoObjectOrArray)
{
    Palette palette;

    EXPECT_EQ(TypeErrorOf([&] { JsonSerializer::Deserialize(palette, Json::array()); }),
              "[json.exception.type_error.302] type must be object, but is array");
    EXPECT_EQ(TypeErrorOf([&] {
                  JsonSerializer::Deserialize(palette, Json{{"pen", nullptr}});
              }),
              "[json.exception.type_error.302] type must be object, but is null");
    EXPECT_EQ(TypeErrorOf([&] {
                  JsonSerializer::Deserialize(palette, Json{{"strokes", Json::object()}});
              }),
              "[json.exception.type_error.302] type must be array, but is object");
}

TEST(JsonSerializer, MayBeUsedAsAnObject)
{
    Stroke const stroke;
    JsonSerializer const serializer;

    EXPECT_EQ(serializer.Serialize(stroke), (Json{{"width", 1}, {"name", ""}}));
}

TEST(JsonSerializer, IgnoresUnknownKeysAndLeavesWhatIsNotNamed)
{
    Stroke stroke;
    stroke.name = "kept";
    Json const document{{"width", 4}, {"unknown", {{"deep", true}}}};

    JsonSerializer::Validate(stroke, document);
    JsonSerializer::Deserialize(stroke, document);

    EXPECT_EQ(JsonSerializer::Serialize(stroke), (Json{{"width", 4}, {"name", "kept"}}));
}

TEST(JsonSerializer, GivesAnArrayTheSizeOfTheDocument)
{
    Palette palette;
    palette.strokes.Resize(3);
    palette.strokes[0].name = "first";

    JsonSerializer::Deserialize(palette, Json{{"strokes", {{{"width", 5}}}}});

    ASSERT_EQ(palette.strokes.Count(), 1u);
    EXPECT_EQ(palette.strokes[0].width, 5);
    EXPECT_EQ(palette.strokes[0].name, "first");
}

TEST(JsonSerializer, ChangesNothingWhenItValidates)
{
    Palette palette;
    palette.strokes.Resize(1);
    Json const before = JsonSerializer::Serialize(palette);
    Json const document{{"colour", 200}, {"strokes", {{{"width", 5}}, {{"width", 6}}}}, {"pen", {{"name", "x"}}}};

    JsonSerializer::Validate(palette, document);

    EXPECT_EQ(JsonSerializer::Serialize(palette), before);
}

TEST(JsonSerializer, FindsABadValueAnywhereBeforeAnythingIsStored)
{
    Palette palette;
    palette.strokes.Resize(1);
    palette.pen.width.EnableMaximum(true).GetMaximum() = 10;
    Json const before = JsonSerializer::Serialize(palette);
    ZuTest::LogRecorder log;

    EXPECT_EQ(RefusalOf([&] {
                  JsonSerializer::Validate(palette, Json{{"colour", 200}, {"pen", {{"width", 11}}}});
              }),
              (Refusal{-997, "Width was set to be greater than its maximum."}));
    EXPECT_EQ(TypeErrorOf([&] {
                  JsonSerializer::Validate(palette, Json{{"strokes", {Json::object(), {{"width", "wide"}}}}});
              }),
              "[json.exception.type_error.302] type must be number, but is string"); // an element that is not there yet

    EXPECT_EQ(JsonSerializer::Serialize(palette), before);
    EXPECT_EQ(log.Lines(), (std::vector<ZuTest::LogLine>{{0x8000000100000002, "Params validation",
                                                          "Width was set to be greater than its maximum."}}));
}

TEST(JsonSerializer, StoresAsItGoesWithoutValidation)
{
    Palette palette;
    Json const document{{"colour", 1}, {"pen", {{"width", 1e9}}}}; // no option of the first; children in their order

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Deserialize(palette, document); }),
              (Refusal{-997, "1000000000.0 is not a whole number in the range of uint16."}));

    EXPECT_EQ(palette.colour, Colour::GREEN);
    EXPECT_EQ(palette.pen.width, 1);
}

TEST(JsonSerializer, LeavesWriteOnlyValuesOut)
{
    Stroke stroke;
    stroke.name.SetWriteOnly(true);

    JsonSerializer::Deserialize(stroke, Json{{"name", "secret"}});

    EXPECT_EQ(stroke.name, "secret");
    EXPECT_EQ(JsonSerializer::Serialize(stroke), (Json{{"width", 1}}));
    EXPECT_EQ(JsonSerializer::Serialize(stroke.name), Json());
    EXPECT_TRUE(JsonSerializer::SerializeSchema(stroke).at("properties").contains("name"));
}

TEST(JsonSerializer, DescribesARecordAndWhatIsBeneathIt)
{
    Stroke const stroke;

    EXPECT_EQ(JsonSerializer::SerializeSchema(stroke), Json::parse(R"({
        "type": "object", "extendedType": "Stroke", "title": "", "sortOrder": 0,
        "properties": {
            "width": {"type": "integer", "title": "Width", "sortOrder": 0, "minimum": 0},
            "name": {"type": "string", "title": "name", "sortOrder": 100}
        }})"));
}

} // namespace Zu::Properties
