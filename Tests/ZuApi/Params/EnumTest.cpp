#include "ZuApi/Params/Enum.h"

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Palette.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <typeinfo>

namespace Zu::Params
{

using Properties::JsonSerializer;
using ZuTest::Colour;
using ZuTest::LogLine;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using Json = nlohmann::json;

TEST(ParamsEnum, ShowsItsOptionsInItsSchema)
{
    Enum<Colour> value;
    value.AddOption(Colour::RED, "Red").AddOption(Colour::BLUE, "Blue");

    EXPECT_EQ(
        JsonSerializer::SerializeSchema(value),
        (Json{
            {"type", "integer"}, {"title", ""}, {"sortOrder", 0}, {"enum", {0, 200}}, {"enumText", {"Red", "Blue"}}}));
}

TEST(ParamsEnum, TakesAnOptionAsItsInteger)
{
    Enum<Colour> value;
    value.AddOption(Colour::BLUE, "Blue");

    JsonSerializer::Validate(value, Json(200));
    JsonSerializer::Deserialize(value, Json(200));

    EXPECT_EQ(value, Colour::BLUE);
    EXPECT_EQ(JsonSerializer::Serialize(value), Json(200));
}

TEST(ParamsEnum, RefusesWhatIsNoOption)
{
    Enum<Colour> value;
    value.title = "Colour";
    value.AddOption(Colour::BLUE, "Blue");
    ZuTest::LogRecorder log;

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json(1)); }),
              (Refusal{-997, "Colour was set to a value outside of the enum."}));

    EXPECT_EQ(log.Lines(), (std::vector<LogLine>{{0x8000000100000002, "Params validation",
                                                  "Colour was set to a value outside of the enum."}}));
    EXPECT_EQ(value, Colour::RED);
}

TEST(ParamsEnum, RefusesEveryChangeWithoutOptionsButNotWhatIsThere)
{
    Enum<Colour> value(Colour::GREEN);
    ZuTest::LogRecorder log;

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json(0)); }),
              (Refusal{-997, "<unnamed> was set to a value outside of the enum."}));
    EXPECT_NO_THROW(JsonSerializer::Validate(value, Json(1)));

    EXPECT_EQ(log.Lines(), (std::vector<LogLine>{{0x8000000100000002, "Params validation",
                                                  "<unnamed> was set to a value outside of the enum."}}));
    EXPECT_EQ(value, Colour::GREEN);
}

TEST(ParamsEnum, TestsTheListAlsoWhenItIsReadOnly)
{
    Enum<Colour> value;
    value.EnableReadOnly().readOnly = true;
    ZuTest::LogRecorder log;

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json(1)); }),
              (Refusal{-997, "<unnamed> was set to a value outside of the enum."}));

    EXPECT_EQ(log.Lines(),
              (std::vector<LogLine>{
                  {0x8000000000000001, "Zu::Params::ParamsBase::CheckValidation", "<unnamed> is read-only."},
                  {0x8000000100000002, "Params validation", "<unnamed> was set to a value outside of the enum."}}));
}

TEST(ParamsEnum, RefusesANumberThatItsIntegerCannotHold)
{
    Enum<Colour> value;
    value.AddOption(Colour::RED, "Red");

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Deserialize(value, Json(256)); }),
              (Refusal{-997, "The number is out of range."}));

    EXPECT_EQ(value, Colour::RED);
}

TEST(ParamsEnum, SetsItsListsAsWholesValuesFirst)
{
    Enum<Colour> value;
    std::string order;
    value.enumValues.AddObserver([&order](Properties::Node&) { order += "values "; });
    value.enumTexts.AddObserver([&order](Properties::Node&) { order += "texts "; });

    value.AddOption(Colour::RED, "Red");

    EXPECT_EQ(order, "values texts ");
}

TEST(ParamsEnum, CopiesItsLists)
{
    Enum<Colour> source(Colour::BLUE);
    source.AddOption(Colour::BLUE, "Blue");
    Enum<Colour> value;
    Value<Colour> const noList(Colour::GREEN);

    value.CopyValues(source);

    EXPECT_EQ(value, Colour::BLUE);
    EXPECT_EQ(value.enumValues.Get(), (std::vector<Colour>{Colour::BLUE}));
    EXPECT_EQ(value.enumTexts.Get(), (std::vector<std::string>{"Blue"}));
    EXPECT_THROW(value.CopyValues(noList), std::bad_cast);
    EXPECT_EQ(value, Colour::BLUE);
}

} // namespace Zu::Params
