#include "ZuApi/Params/Value.h"

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Palette.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <typeinfo>

namespace Zu::Params
{

using Properties::JsonSerializer;
using ZuTest::LogLine;
using ZuTest::LogRecorder;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using Json = nlohmann::json;

namespace
{

/// The user line that a refused validation logs.
LogLine Refused(std::string text)
{
    return {0x8000000100000002, "Params validation", std::move(text)};
}

LogLine ReadOnly(std::string const& name)
{
    return {0x8000000000000001, "Zu::Params::ParamsBase::CheckValidation", name + " is read-only."};
}

std::vector<std::string> SchemaKeys(Properties::Node const& node)
{
    std::vector<std::string> keys;
    for (uint64 i = 0; i < node.Schema()->Count(); ++i)
    {
        keys.push_back(node.Schema()->KeyAt(i));
    }
    return keys;
}

/// Validates and deserializes, like a write of a client.
void Write(Properties::Node& node, Json const& document)
{
    JsonSerializer::Validate(node, document);
    JsonSerializer::Deserialize(node, document);
}

/// A parameter that is read-only at 5.
class ReadOnlyValue : public testing::Test
{
protected:
    ReadOnlyValue()
    {
        value.title = "Port";
        value.EnableReadOnly().readOnly = true;
    }

    Value<int32> value{5};
    LogRecorder log;
};

} // namespace

TEST(ParamsValue, ShowsTypeTitleAndSortOrderAtBirth)
{
    EXPECT_EQ(SchemaKeys(Value<int32>()), (std::vector<std::string>{"type", "title", "sortOrder"}));
    EXPECT_EQ(SchemaKeys(Value<double>()), (std::vector<std::string>{"type", "title", "sortOrder"}));
    EXPECT_EQ(SchemaKeys(Value<bool>()), (std::vector<std::string>{"type", "title", "sortOrder"}));
    EXPECT_EQ(SchemaKeys(Value<std::string>()), (std::vector<std::string>{"type", "title", "sortOrder"}));
    EXPECT_EQ(SchemaKeys(Value<ZuTest::Colour>()), (std::vector<std::string>{"type", "title", "sortOrder"}));
}

TEST(ParamsValue, IsBornWithAMinimumOfZeroWhenItIsUnsigned)
{
    Value<uint16> small;
    Value<uint32> middle;
    Value<uint64> large;

    EXPECT_EQ(small.GetMinimum().Get(), 0);
    EXPECT_EQ(middle.GetMinimum().Get(), 0u);
    EXPECT_EQ(large.GetMinimum().Get(), 0u);
    EXPECT_EQ(SchemaKeys(large), (std::vector<std::string>{"type", "title", "sortOrder", "minimum"}));
    EXPECT_EQ(RefusalOf([] { Value<int32>().GetMinimum(); }),
              (Refusal{-997, "Must enable 'minimum' before using it."}));
}

TEST(ParamsValue, LosesTheMinimumOfItsBirthWhenThatIsDisabled)
{
    Value<uint16> value;

    value.EnableMinimum(false);

    EXPECT_EQ(SchemaKeys(value), (std::vector<std::string>{"type", "title", "sortOrder"}));
    EXPECT_EQ(RefusalOf([&] { value.SetMinimum(3); }),
              (Refusal{-997, "Must enable 'minimum' before setting the value."}));
    EXPECT_EQ(value.EnableMinimum(true).GetMinimum(), 0);
}

TEST(ParamsValue, RefusesAnAttributeThatIsNotEnabled)
{
    Value<double> const value;
    LogRecorder log;

    EXPECT_EQ(RefusalOf([&] { value.GetUnits(); }), (Refusal{-997, "Must enable 'units' before using it."}));
    EXPECT_EQ(RefusalOf([&] { value.GetDescription(); }),
              (Refusal{-997, "Must enable 'description' before using it."}));
    EXPECT_EQ(RefusalOf([&] { value.GetActual(); }), (Refusal{-997, "Must enable 'actual' before using it."}));
    EXPECT_EQ(RefusalOf([&] { value.GetMinimum(); }), (Refusal{-997, "Must enable 'minimum' before using it."}));
    EXPECT_EQ(RefusalOf([&] { value.GetMaximum(); }), (Refusal{-997, "Must enable 'maximum' before using it."}));
    EXPECT_EQ(RefusalOf([&] { value.GetExclusiveMinimum(); }),
              (Refusal{-997, "Must enable 'exclusiveMinimum' before using it."}));
    EXPECT_EQ(RefusalOf([&] { value.GetExclusiveMaximum(); }),
              (Refusal{-997, "Must enable 'exclusiveMaximum' before using it."}));
    EXPECT_EQ(RefusalOf([&] { value.GetScale(); }), (Refusal{-997, "Must enable 'scale' before using it."}));
    EXPECT_EQ(RefusalOf([&] { value.GetFormat(); }), (Refusal{-997, "Must enable 'format' before using it."}));
    EXPECT_EQ(log.Lines(), std::vector<LogLine>());
}

TEST(ParamsValue, NamesTheFunctionThatRefuses)
{
    try
    {
        Value<double>().GetUnits();
        FAIL() << "nothing was thrown";
    }
    catch (Exception const& exception)
    {
        EXPECT_STREQ(exception.Function(), "Zu::Params::Value::GetUnits");
    }
    try
    {
        Value<double>().EnableMinimum(true).CheckValidation(-1.0);
        FAIL() << "nothing was thrown";
    }
    catch (Exception const& exception)
    {
        EXPECT_STREQ(exception.Function(), "Zu::Params::Value::CheckValidation");
    }
}

TEST(ParamsValue, ShowsEnabledAttributesInItsSchema)
{
    Value<double> value;

    value.EnableUnits(true).EnableDescription(true).EnableActual(true).EnableMinimum(true).EnableMaximum(true);
    value.EnableExclusiveMinimum(true).EnableExclusiveMaximum(true).EnableScale(true).EnableFormat(true);
    value.SetExtendedType("length").EnableUsed(true).EnableReadOnly();
    value.GetUnits() = "mm";

    Json const schema = JsonSerializer::SerializeSchema(value);
    EXPECT_EQ(schema, (Json{{"type", "number"},
                            {"title", ""},
                            {"sortOrder", 0},
                            {"readOnly", false},
                            {"used", false},
                            {"units", "mm"},
                            {"description", ""},
                            {"actual", 0.0},
                            {"minimum", 0.0},
                            {"maximum", 0.0},
                            {"exclusiveMinimum", 0.0},
                            {"exclusiveMaximum", 0.0},
                            {"scale", 1},
                            {"extendedType", "length"},
                            {"format", ""}}));
}

TEST(ParamsValue, KeepsItsSchemaInStepOnceThatIsMade)
{
    Value<double> value;
    value.Schema();

    value.EnableUnits(true).EnableMaximum(true).SetExtendedType("length").EnableReadOnly();
    value.EnableUnits(false).EnableUnits(false);

    EXPECT_EQ(SchemaKeys(value),
              (std::vector<std::string>{"type", "title", "sortOrder", "maximum", "extendedType", "readOnly"}));
    value.SetExtendedType("").SetExtendedType("");
    EXPECT_EQ(SchemaKeys(value), (std::vector<std::string>{"type", "title", "sortOrder", "maximum", "readOnly"}));
}

TEST(ParamsValue, ReadsAsActualAndIsStoredAndTransferredAsItself)
{
    Value<int32> value(5);

    value.EnableActual(true).GetActual() = 9;

    EXPECT_EQ(value.Get(), 9);
    EXPECT_EQ(value.RawValue(), 5);
    EXPECT_EQ(static_cast<int32 const&>(value), 9);
    EXPECT_EQ(JsonSerializer::Serialize(value), Json(5));
    EXPECT_EQ(value.EnableActual(false).Get(), 5);
}

TEST(ParamsValue, ValidatesAgainstTheStoredValueAndNotTheActualOne)
{
    Value<int32> value(5);
    value.EnableActual(true).GetActual() = 9;
    value.EnableMaximum(true).GetMaximum() = 3;

    EXPECT_NO_THROW(JsonSerializer::Validate(value, Json(5)));
    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json(9)); }),
              (Refusal{-997, "<unnamed> was set to be greater than its maximum."}));
}

TEST(ParamsValue, ReadsItsBoundsAsTheirEffectiveValues)
{
    Value<int32> value(5);
    value.EnableMinimum(true).SetMinimum(4);

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json(3)); }),
              (Refusal{-997, "<unnamed> was set to be less than its minimum."}));
    value.SetMinimum(3);
    EXPECT_NO_THROW(JsonSerializer::Validate(value, Json(3)));
}

struct BoundCase
{
    char const* name;
    void (*bound)(Value<int32>&);
    int32 refused;
    int32 taken;
    char const* sentence;
};

class Bounds : public testing::TestWithParam<BoundCase>
{
};

TEST_P(Bounds, RefuseWhatLiesOutsideInLogAndException)
{
    BoundCase const& given = GetParam();
    Value<int32> value(1000);
    value.title = "Speed";
    given.bound(value);
    LogRecorder log;

    JsonSerializer::Validate(value, Json(1000)); // the stored value is accepted, even outside of the bounds
    Refusal const refusal = RefusalOf([&] { Write(value, Json(given.refused)); });

    EXPECT_EQ(refusal, (Refusal{-997, std::string("Speed") + given.sentence}));
    EXPECT_EQ(log.Lines(), (std::vector<LogLine>{Refused(std::string("Speed") + given.sentence)}));
    EXPECT_EQ(value, 1000);
    EXPECT_NO_THROW(Write(value, Json(given.taken)));
    EXPECT_EQ(value, given.taken);
}

INSTANTIATE_TEST_SUITE_P(
    Each, Bounds,
    testing::Values(
        BoundCase{"Minimum", [](Value<int32>& value) { value.EnableMinimum(true).SetMinimum(10); }, 9, 10,
                  " was set to be less than its minimum."},
        BoundCase{"Maximum", [](Value<int32>& value) { value.EnableMaximum(true).GetMaximum() = 10; }, 11, 10,
                  " was set to be greater than its maximum."},
        BoundCase{"ExclusiveMinimum",
                  [](Value<int32>& value) { value.EnableExclusiveMinimum(true).GetExclusiveMinimum() = 10; }, 10, 11,
                  " was set to be less than or equal to its exclusive minimum."},
        BoundCase{"ExclusiveMaximum",
                  [](Value<int32>& value) { value.EnableExclusiveMaximum(true).GetExclusiveMaximum() = 10; }, 10, 9,
                  " was set to be greater than or equal to its exclusive maximum."}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(ParamsValue, IsCalledUnnamedInBothWordingsWithoutATitle)
{
    Value<int32> value;
    value.EnableMinimum(true);
    LogRecorder log;

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json(-1)); }),
              (Refusal{-997, "<unnamed> was set to be less than its minimum."}));

    EXPECT_EQ(log.Lines(), (std::vector<LogLine>{Refused("<unnamed> was set to be less than its minimum.")}));
}

TEST(ParamsValue, KeepsAPercentSignOfItsTitle)
{
    Value<int32> value;
    value.title = "100%s";
    value.EnableMinimum(true);
    LogRecorder log;

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json(-1)); }),
              (Refusal{-997, "100%s was set to be less than its minimum."}));

    EXPECT_EQ(log.Lines(), (std::vector<LogLine>{Refused("100%s was set to be less than its minimum.")}));
}

TEST(ParamsValue, ComparesStringsByBytesAndThenByLength)
{
    Value<std::string> value("x");
    value.EnableMaximum(true).GetMaximum() = "ab";
    Refusal const tooGreat{-997, "<unnamed> was set to be greater than its maximum."};

    EXPECT_NO_THROW(JsonSerializer::Validate(value, Json("a")));
    EXPECT_NO_THROW(JsonSerializer::Validate(value, Json("ab")));
    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json("aba")); }), tooGreat);
    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json("\xC3\xA4")); }), tooGreat);
}

TEST(ParamsValue, ComparesFlagsAsZeroAndOne)
{
    Value<bool> value;
    value.EnableMaximum(true);
    Value<bool> other(true);
    other.EnableExclusiveMinimum(true);

    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json(true)); }),
              (Refusal{-997, "<unnamed> was set to be greater than its maximum."}));
    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(other, Json(false)); }),
              (Refusal{-997, "<unnamed> was set to be less than or equal to its exclusive minimum."}));
}

TEST(ParamsValue, ComparesEnumerationsAsTheirIntegers)
{
    Value<ZuTest::Colour> value;
    value.EnableMaximum(true).GetMaximum() = ZuTest::Colour::GREEN;

    EXPECT_NO_THROW(JsonSerializer::Validate(value, Json(1)));
    EXPECT_EQ(RefusalOf([&] { JsonSerializer::Validate(value, Json(200)); }),
              (Refusal{-997, "<unnamed> was set to be greater than its maximum."}));
}

TEST(ParamsValue, LetsANumberThatIsNonePassAllBounds)
{
    Value<double> value;
    value.EnableMinimum(true).EnableMaximum(true).EnableExclusiveMinimum(true).EnableExclusiveMaximum(true);

    EXPECT_NO_THROW(value.CheckValidation(std::numeric_limits<double>::quiet_NaN()));
}

TEST(ParamsValue, IsSetByTheProgramWithoutValidation)
{
    Value<int32> value;
    value.EnableMaximum(true).EnableReadOnly().readOnly = true;

    value = 17;

    EXPECT_EQ(value, 17);
}

TEST_F(ReadOnlyValue, LogsAndIgnoresAValidatedWrite)
{
    Write(value, Json(7));

    EXPECT_EQ(value, 5);
    EXPECT_EQ(log.Lines(), (std::vector<LogLine>{ReadOnly("Port")}));
}

TEST_F(ReadOnlyValue, TakesTheSameValueSilentlyWhateverItsBounds)
{
    value.EnableMaximum(true).GetMaximum() = 4;

    Write(value, Json(5));

    EXPECT_EQ(value, 5);
    EXPECT_EQ(log.Lines(), std::vector<LogLine>());
}

TEST_F(ReadOnlyValue, StoresWhatWasNotValidated)
{
    JsonSerializer::Deserialize(value, Json(7));

    EXPECT_EQ(value, 7);
    EXPECT_EQ(log.Lines(), std::vector<LogLine>());
}

TEST_F(ReadOnlyValue, IsStillTestedAgainstItsBounds)
{
    value.EnableMaximum(true).GetMaximum() = 6;

    EXPECT_EQ(RefusalOf([this] { Write(value, Json(7)); }),
              (Refusal{-997, "Port was set to be greater than its maximum."}));

    EXPECT_EQ(log.Lines(),
              (std::vector<LogLine>{ReadOnly("Port"), Refused("Port was set to be greater than its maximum.")}));
    EXPECT_EQ(value, 5);
}

TEST_F(ReadOnlyValue, IgnoresTheNextReadOfARefusedValueOnce)
{
    value.EnableMaximum(true).GetMaximum() = 6;
    EXPECT_EQ(RefusalOf([this] { Write(value, Json(7)); }),
              (Refusal{-997, "Port was set to be greater than its maximum."}));
    JsonSerializer::Validate(value, Json(5)); // unchanged: clears nothing

    JsonSerializer::Deserialize(value, Json(7));
    EXPECT_EQ(value, 5);
    JsonSerializer::Deserialize(value, Json(7));
    EXPECT_EQ(value, 7);
}

TEST_F(ReadOnlyValue, StoresAnotherValueThanTheRejectedOne)
{
    JsonSerializer::Validate(value, Json(7));

    JsonSerializer::Deserialize(value, Json(8));

    EXPECT_EQ(value, 8);
}

TEST_F(ReadOnlyValue, FollowsItsMarkAtRunTime)
{
    value.readOnly = false;
    Write(value, Json(7));

    EXPECT_EQ(value, 7);
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ReadOnlyValue, ForgetsARejectionWithTheNextTestThatFindsNone)
{
    JsonSerializer::Validate(value, Json(7));
    value.readOnly = false;

    Write(value, Json(7));

    EXPECT_EQ(value, 7);
}

TEST(ParamsValue, IsNotReadOnlyThroughItsEnabledMarkAlone)
{
    Value<int32> value(5);
    value.EnableReadOnly();

    Write(value, Json(7));

    EXPECT_EQ(value, 7);
    EXPECT_FALSE(value.readOnly.Get());
}

TEST(ParamsValue, IsNotReadOnlyThroughTheValueOfAMarkThatIsNotEnabled)
{
    Value<int32> value(5);
    value.readOnly = true;

    Write(value, Json(7));

    EXPECT_EQ(value, 7);
}

TEST(ParamsValue, HasEitherUsedOrVisibility)
{
    Value<int32> usedOne;
    Value<int32> visibleOne;
    usedOne.EnableUsed(true);
    visibleOne.EnableVisibility(true);

    EXPECT_EQ(RefusalOf([&] { usedOne.EnableVisibility(true); }),
              (Refusal{-997, "Used is already enabled, cannot enable visibility."}));
    EXPECT_EQ(RefusalOf([&] { visibleOne.EnableUsed(true); }),
              (Refusal{-997, "Visibility is already enabled, cannot enable used."}));

    EXPECT_EQ(usedOne.Schema()->Find("visibility"), nullptr);
    EXPECT_EQ(visibleOne.Schema()->Find("used"), nullptr);
}

TEST(ParamsValue, HasAVisibilityMaskWhileThatIsEnabled)
{
    Value<int32> value;
    EXPECT_EQ(RefusalOf([&] { value.ClearVisibility(); }),
              (Refusal{-997, "Visibility not enabled, cannot clear visibility types"}));
    EXPECT_NO_THROW(value.EnableVisibility(false));

    value.EnableVisibility(true);
    value.visibility->Set(6);
    EXPECT_EQ(JsonSerializer::SerializeSchema(value).at("visibility"), Json(6));
    value.ClearVisibility();
    EXPECT_EQ(value.visibility->Get(), 0u);
    value.EnableVisibility(false);

    EXPECT_EQ(value.visibility, nullptr);
    EXPECT_EQ(value.Schema()->Find("visibility"), nullptr);
}

TEST(ParamsValue, CopiesEverythingThatAnotherHas)
{
    Value<int32> source(5);
    source.title = "Speed";
    source.sortOrder = 300;
    source.EnableUnits(true).EnableDescription(true).EnableActual(true).EnableMinimum(true).EnableMaximum(true);
    source.EnableExclusiveMinimum(true).EnableExclusiveMaximum(true).EnableScale(true).EnableFormat(true);
    source.SetExtendedType("speed").EnableUsed(true).EnableReadOnly();
    source.readOnly = true;
    source.used = true;
    source.GetUnits() = "m/s";
    source.GetDescription() = "how fast";
    source.GetActual() = 9;
    source.GetMinimum() = 1;
    source.GetMaximum() = 2;
    source.GetExclusiveMinimum() = 3;
    source.GetExclusiveMaximum() = 4;
    source.GetFormat() = "%d";
    Value<int32> early;
    Value<int32> late;
    early.Schema();

    early.CopyValues(source);
    late.CopyValues(source);

    EXPECT_EQ(early.RawValue(), 9); // the effective value
    EXPECT_EQ(JsonSerializer::SerializeSchema(early), JsonSerializer::SerializeSchema(source));
    EXPECT_EQ(JsonSerializer::SerializeSchema(late), JsonSerializer::SerializeSchema(source));
}

TEST(ParamsValue, DropsAttributesThatTheOtherLacksInACopy)
{
    Value<uint16> value(5);
    value.EnableUnits(true).EnableMaximum(true).SetExtendedType("speed").SetMinimum(4);
    Value<uint16> const plain(6);

    value.CopyValues(plain);

    EXPECT_EQ(value, 6);
    EXPECT_EQ(JsonSerializer::SerializeSchema(value), JsonSerializer::SerializeSchema(plain));
    EXPECT_EQ(value.GetMinimum(), 0);
}

TEST(ParamsValue, KeepsMarksInItsSchemaThatTheOtherLacks)
{
    Value<int32> used;
    Value<int32> visible;
    Value<int32> const plain;
    used.EnableUsed(true);
    visible.EnableVisibility(true);

    used.CopyValues(plain);
    visible.CopyValues(plain);

    EXPECT_FALSE(used.IsUsedEnabled());
    EXPECT_NE(used.Schema()->Find("used"), nullptr);
    EXPECT_FALSE(visible.IsVisibilityEnabled());
    EXPECT_NE(visible.Schema()->Find("visibility"), nullptr);
}

TEST(ParamsValue, RefusesACopyOfAnotherTypeAndStaysAsItWas)
{
    Value<int32> value(5);
    value.title = "mine";
    Value<uint32> const stranger(6);
    Properties::Value<int32> const plain(7);

    EXPECT_THROW(value.CopyValues(stranger), std::bad_cast);
    EXPECT_THROW(value.CopyValues(plain), std::bad_cast);

    EXPECT_EQ(value, 5);
    EXPECT_EQ(value.title, "mine");
}

TEST(ParamsValue, IsBlindToARejectionOfTheOneItCopies)
{
    Value<int32> source(5);
    source.EnableReadOnly().readOnly = true;
    JsonSerializer::Validate(source, Json(7));
    Value<int32> value;

    value.CopyValues(source);
    JsonSerializer::Deserialize(value, Json(7));

    EXPECT_EQ(value, 7);
}

TEST(ParamsAttribute, BecomesANodeWithObserversAndKeepsItsValue)
{
    Value<int32> value;
    value.title = "one";
    value.sortOrder = 3;
    std::vector<std::string> seen;
    value.title.Node().AddObserver([&](Properties::Node&) { seen.push_back(value.title.Get()); });

    value.title = "two";
    value.title.Set("two");
    value.sortOrder.Node().Set(4);

    EXPECT_EQ(seen, (std::vector<std::string>{"one"}));
    EXPECT_EQ(value.title, "two");
    EXPECT_EQ(value.sortOrder.Get(), 4u);
    EXPECT_EQ(value.Schema()->Find("title"), &value.title.Node());
}

} // namespace Zu::Params
