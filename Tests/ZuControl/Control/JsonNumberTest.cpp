#include "ZuControl/Control/StateDocuments.h"

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
    int64 asInt64;
    uint64 asUint64;
    uint32 asUint32;
};

std::vector<NumberCase> AllNumbers()
{
    return {
        {"Zero", 0, 0, 0, 0},
        {"Integer", 42, 42, 42, 42},
        {"LastOf32Bits", 4294967295, 4294967295, 4294967295, 4294967295},
        {"Beyond32Bits", 4294967297, 4294967297, 4294967297, 1},
        {"GreatestInteger", GREATEST, GREATEST, GREATEST, 4294967295},
        {"GreatestUnsignedInteger", GREATEST_UNSIGNED, -1, GREATEST_UNSIGNED, 4294967295},
        {"NegativeInteger", -1, -1, GREATEST_UNSIGNED, 4294967295},
        {"LeastInteger", LEAST, LEAST, uint64{1} << 63, 0},
        {"Fraction", 2.9, 2, 2, 2},
        {"NegativeFraction", -2.9, -2, GREATEST_UNSIGNED - 1, 4294967294},
        {"FractionBeyond32Bits", 4294967296.5, 4294967296, 4294967296, 0},
        {"SecondFractionBeyond32Bits", 4294967297.5, 4294967297, 4294967297, 1},
        {"LastOfTheSignedRange", 9223372036854774784.0, 9223372036854774784, 9223372036854774784, 4294966272},
        {"BeyondTheSignedRange", 9223372036854775808.0, GREATEST, uint64{1} << 63, 4294967295},
        {"BeyondTheUnsignedRange", 2e19, GREATEST, GREATEST_UNSIGNED, 4294967295},
        {"FirstOfTheSignedRange", -9223372036854775808.0, LEAST, uint64{1} << 63, 0},
        {"BelowTheSignedRange", -1e300, LEAST, uint64{1} << 63, 0},
        {"Infinity", std::numeric_limits<double>::infinity(), GREATEST, GREATEST_UNSIGNED, 4294967295},
        {"NoNumber", std::numeric_limits<double>::quiet_NaN(), 0, 0, 0},
    };
}

} // namespace

class JsonNumberTest : public testing::TestWithParam<NumberCase>
{
};

TEST_P(JsonNumberTest, ClampsFractionsAndWrapsIntegers)
{
    NumberCase const& given = GetParam();

    EXPECT_EQ(JsonNumber::ToInt64(given.value), given.asInt64);
    EXPECT_EQ(JsonNumber::ToUint64(given.value), given.asUint64);
    EXPECT_EQ(JsonNumber::ToUint32(given.value), given.asUint32);
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
