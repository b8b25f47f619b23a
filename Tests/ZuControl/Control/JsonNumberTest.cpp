#include "ZuControl/Control/JsonNumber.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace ZuControl
{

namespace
{

using Json = nlohmann::json;

constexpr int64 LEAST = std::numeric_limits<int64>::min();
constexpr int64 GREATEST = std::numeric_limits<int64>::max();
constexpr uint64 GREATEST_UNSIGNED = std::numeric_limits<uint64>::max();

struct NumberCase
{
    char const* name;
    Json value;
    int64 asSigned;
    uint64 asUnsigned;
};

std::vector<NumberCase> AllNumbers()
{
    return {
        {"Zero", 0, 0, 0},
        {"Integer", 42, 42, 42},
        {"GreatestInteger", GREATEST, GREATEST, GREATEST},
        {"NegativeInteger", -1, -1, GREATEST_UNSIGNED},
        {"Fraction", 2.9, 2, 2},
        {"NegativeFraction", -2.9, -2, GREATEST_UNSIGNED - 1},
        {"LastOfTheSignedRange", 9223372036854774784.0, 9223372036854774784, 9223372036854774784},
        {"BeyondTheSignedRange", 9223372036854775808.0, GREATEST, uint64{1} << 63},
        {"BeyondTheUnsignedRange", 2e19, GREATEST, GREATEST_UNSIGNED},
        {"FirstOfTheSignedRange", -9223372036854775808.0, LEAST, uint64{1} << 63},
        {"BelowTheSignedRange", -1e300, LEAST, uint64{1} << 63},
        {"Infinity", std::numeric_limits<double>::infinity(), GREATEST, GREATEST_UNSIGNED},
        {"NoNumber", std::numeric_limits<double>::quiet_NaN(), 0, 0},
    };
}

} // namespace

class JsonNumberTest : public testing::TestWithParam<NumberCase>
{
};

TEST_P(JsonNumberTest, GivesTheNearestThatTheTypeHolds)
{
    NumberCase const& given = GetParam();

    EXPECT_EQ(JsonNumber::ToInt64(given.value), given.asSigned);
    EXPECT_EQ(JsonNumber::ToUint64(given.value), given.asUnsigned);
    EXPECT_EQ(JsonNumber::ToUint32(given.value), static_cast<uint32>(given.asSigned));
}

INSTANTIATE_TEST_SUITE_P(Every, JsonNumberTest, testing::ValuesIn(AllNumbers()),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST(JsonNumber, FindsOnlyWhatIsThereAndNotNull)
{
    Json const document = {{"here", 1}, {"none", nullptr}};

    ASSERT_NE(JsonNumber::FindPresent(document, "here"), nullptr);
    EXPECT_EQ(*JsonNumber::FindPresent(document, "here"), 1);
    EXPECT_EQ(JsonNumber::FindPresent(document, "none"), nullptr);
    EXPECT_EQ(JsonNumber::FindPresent(document, "elsewhere"), nullptr);
    EXPECT_EQ(JsonNumber::FindPresent(Json::array({1}), "here"), nullptr);
}

TEST(JsonNumber, RefusesWhatIsNoNumber)
{
    EXPECT_THROW(JsonNumber::ToUint64("7"), Json::type_error);
    EXPECT_THROW(JsonNumber::ToInt64(Json::array()), Json::type_error);
    EXPECT_THROW(JsonNumber::ToUint32(nullptr), Json::type_error);
    EXPECT_EQ(JsonNumber::ToUint32(true), 1u);
}

} // namespace ZuControl
