#include "Plugins/AsciiTcp/AsciiText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <string>

namespace AsciiTcp
{

struct ValueCase
{
    char const* name;
    Reading reading;
    uint32 decimals;
    char const* written;
};

class AsciiValue : public testing::TestWithParam<ValueCase>
{
};

TEST_P(AsciiValue, IsWrittenWithItsDigits)
{
    std::string line = "before ";

    AppendValue(line, GetParam().reading, GetParam().decimals);

    EXPECT_EQ(line, std::string("before ") + GetParam().written);
}

constexpr Reading Valid(double value)
{
    return {Reading::State::VALID, 1, value};
}

INSTANTIATE_TEST_SUITE_P(EveryKind, AsciiValue,
                         testing::Values(ValueCase{"ThreeDigits", Valid(12.3456), 3, "12.346"},
                                         ValueCase{"NoDigits", Valid(12.5), 0, "12"},
                                         ValueCase{"NineDigits", Valid(0.1), 9, "0.100000000"},
                                         ValueCase{"MoreThanThereAre", Valid(0.1), 4'000'000'000, "0.100000000"},
                                         ValueCase{"Negative", Valid(-0.25), 3, "-0.250"},
                                         ValueCase{"RoundedToZeroFromBelow", Valid(-0.0001), 3, "0.000"},
                                         ValueCase{"NegativeZero", Valid(-0.0), 0, "0"},
                                         ValueCase{"SmallAndNotZero", Valid(-0.001), 3, "-0.001"},
                                         ValueCase{"Large", Valid(123456789012.0), 1, "123456789012.0"},
                                         ValueCase{"NoResultYet", {}, 3, "none"},
                                         ValueCase{"NoNumber", {Reading::State::INVALID, 0, 0}, 3, "invalid"}),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST(AsciiText, WritesTheLongestNumberThereIs)
{
    std::string line;

    AppendValue(line, Valid(-std::numeric_limits<double>::max()), MOST_DECIMALS);

    EXPECT_EQ(line.size(), 1u + 309u + 1u + 9u);
    EXPECT_TRUE(line.starts_with("-179769313486231570"));
}

TEST(AsciiText, WritesAPointWhateverTheLocale)
{
    std::string const before = std::setlocale(LC_NUMERIC, nullptr);
    bool const hasOther = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr;
    std::string line;

    AppendValue(line, Valid(1234.5), 1);

    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_EQ(line, "1234.5") << (hasOther ? "with another locale" : "the other locale is not installed");
}

struct NameCase
{
    char const* name;
    std::string meant;
    std::string written;
};

class AsciiName : public testing::TestWithParam<NameCase>
{
};

TEST_P(AsciiName, IsOneWordAndReadsBack)
{
    std::string line;

    AppendName(line, GetParam().meant);

    EXPECT_EQ(line, GetParam().written);
    EXPECT_EQ(ReadName(line), GetParam().meant);
}

INSTANTIATE_TEST_SUITE_P(
    EveryByte, AsciiName,
    testing::Values(NameCase{"Plain", "zMax", "zMax"}, NameCase{"Path", "profile/zMax-1:2", "profile/zMax-1:2"},
                    NameCase{"Blank", "largest z", "largest%20z"}, NameCase{"EqualsSign", "a=b", "a%3Db"},
                    NameCase{"Percent", "100%", "100%25"}, NameCase{"PercentAndDigits", "%41", "%2541"},
                    NameCase{"LineFeed", "a\nb", "a%0Ab"}, NameCase{"Nul", std::string("a\0b", 3), "a%00b"},
                    NameCase{"Delete", "\x7F", "%7F"}, NameCase{"Above127", "\xFF\xC3", "\xFF\xC3"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(AsciiText, TakesAPercentSignWithoutTwoDigitsForItself)
{
    EXPECT_EQ(ReadName("100%"), "100%");
    EXPECT_EQ(ReadName("%4"), "%4");
    EXPECT_EQ(ReadName("%4g"), "%4g");
    EXPECT_EQ(ReadName("%g4"), "%g4");
    EXPECT_EQ(ReadName("%-1"), "%-1");
    EXPECT_EQ(ReadName("%3d%3D"), "==");
    EXPECT_EQ(ReadName(""), "");
}

TEST(AsciiText, KeepsAnErrorOnOneLine)
{
    std::string line;

    AppendError(line, -984, "first\r\nsecond");

    EXPECT_EQ(line, "ERROR -984 first  second");
}

TEST(AsciiText, KnowsControlCharacters)
{
    EXPECT_TRUE(IsPrintable(""));
    EXPECT_TRUE(IsPrintable("a b~\x80\xFF"));
    EXPECT_FALSE(IsPrintable("a\tb"));
    EXPECT_FALSE(IsPrintable(std::string("\0", 1)));
    EXPECT_FALSE(IsPrintable("\x7F"));
}

} // namespace AsciiTcp
