#include "Host/Store/JobName.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

struct NameCase
{
    char const* label;
    std::string name;
    bool isValid;
};

class JobNames : public testing::TestWithParam<NameCase>
{
};

} // namespace

TEST_P(JobNames, AreCheckedBeforeTheyBecomeFiles)
{
    NameCase const& given = GetParam();

    ZuTest::Refusal const refusal = ZuTest::RefusalOf([&] { JobName name(given.name); });

    EXPECT_EQ(refusal.status, given.isValid ? Zu::Status::SUCCESS : Zu::Status::BAD_ARGUMENT);
}

INSTANTIATE_TEST_SUITE_P(Table, JobNames,
                         testing::Values(NameCase{"Plain", "default", true}, NameCase{"Spaces", "left side 2", true},
                                         NameCase{"Umlaut", "T\xC3\xBCr", true}, NameCase{"InnerDot", "v1.2", true},
                                         NameCase{"Longest", std::string(63, 'x'), true}, NameCase{"Empty", "", false},
                                         NameCase{"TooLong", std::string(64, 'x'), false},
                                         NameCase{"Slash", "a/b", false}, NameCase{"Backslash", "a\\b", false},
                                         NameCase{"Up", "..", false}, NameCase{"UpInside", "a..b", false},
                                         NameCase{"Hidden", ".hidden", false}, NameCase{"LineBreak", "a\nb", false},
                                         NameCase{"Zero", std::string("a\0b", 3), false},
                                         NameCase{"Delete", "a\x7F", false}, NameCase{"NoUtf8", "a\xFF", false},
                                         NameCase{"CutUtf8", "a\xC3", false}, NameCase{"Overlong", "\xC0\xAF", false}),
                         [](auto const& tested) { return std::string(tested.param.label); });

INSTANTIATE_TEST_SUITE_P(Unicode, JobNames,
                         testing::Values(NameCase{"Chinese", "\xE5\xB7\xA6", true},                 // U+5DE6
                                         NameCase{"LastBeforeTheSurrogates", "\xED\x9F\xBF", true}, // U+D7FF
                                         NameCase{"FirstSurrogate", "\xED\xA0\x80", false},         // U+D800
                                         NameCase{"LastSurrogate", "\xED\xBF\xBF", false},          // U+DFFF
                                         NameCase{"PairOfSurrogates", "\xED\xA0\xBD\xED\xB8\x80",
                                                  false},                                      // U+D83D U+DE00
                                         NameCase{"FourBytes", "\xF0\x9F\x98\x80", true},      // U+1F600
                                         NameCase{"LastCharacter", "\xF4\x8F\xBF\xBF", true},  // U+10FFFF
                                         NameCase{"BehindTheLast", "\xF4\x90\x80\x80", false}, // 110000 (hexadecimal)
                                         NameCase{"SlashInThreeBytes", "\xE0\x80\xAF", false},
                                         NameCase{"SlashInFourBytes", "\xF0\x80\x80\xAF", false},
                                         NameCase{"NextLine", "a\xC2\x85", false},                // U+0085
                                         NameCase{"SoftHyphen", "a\xC2\xAD", false},              // U+00AD
                                         NameCase{"ArabicLetterMark", "a\xD8\x9C", false},        // U+061C
                                         NameCase{"ZeroWidthSpace", "a\xE2\x80\x8B", false},      // U+200B
                                         NameCase{"RightToLeftMark", "a\xE2\x80\x8F", false},     // U+200F
                                         NameCase{"LineSeparator", "a\xE2\x80\xA8", false},       // U+2028
                                         NameCase{"RightToLeftOverride", "a\xE2\x80\xAE", false}, // U+202E
                                         NameCase{"IsolateEnd", "a\xE2\x81\xA9", false},          // U+2069
                                         NameCase{"ByteOrderMark", "\xEF\xBB\xBF", false},        // U+FEFF
                                         NameCase{"Tag", "a\xF3\xA0\x81\x81", false}),            // U+E0041
                         [](auto const& tested) { return std::string(tested.param.label); });

TEST(JobName, LosesTheSuffixOfItsFileOnce)
{
    EXPECT_EQ(JobName("table.zpjob"), JobName("table"));
    EXPECT_EQ(JobName("table.zpjob").Text(), "table");
    EXPECT_EQ(JobName("table").FileName(), "table.zpjob");
    EXPECT_EQ(ZuTest::RefusalOf([] { JobName name(".zpjob"); }).status, Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(ZuTest::RefusalOf([] { JobName name("table.zpjob.zpjob"); }),
              (ZuTest::Refusal{Zu::Status::BAD_ARGUMENT,
                               "'table.zpjob.zpjob' cannot be the name of a job: 1 to 63 bytes of UTF-8, no '/', '\\', "
                               "'..', control or format character, no dot at the head, and at most one '.zpjob' at the "
                               "end"}));
}

TEST(JobName, IsThatOfAFileOnlyWithTheSuffixAndOnce)
{
    EXPECT_EQ(JobName::OfFile("table.zpjob"), JobName("table"));
    EXPECT_EQ(JobName::OfFile("table"), std::nullopt);
    EXPECT_EQ(JobName::OfFile("table.zpjob.zpjob"), std::nullopt);
    EXPECT_EQ(JobName::OfFile("table.zpjob.damaged-1"), std::nullopt);
    EXPECT_EQ(JobName::OfFile(".hidden.zpjob"), std::nullopt);
}

} // namespace ZuHost
