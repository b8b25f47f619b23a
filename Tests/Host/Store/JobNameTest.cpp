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

    EXPECT_EQ(JobName::IsValid(given.name), given.isValid);

    ZuTest::Refusal const refusal = ZuTest::RefusalOf([&] { JobName::Checked(given.name); });
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

TEST(JobName, LosesTheSuffixOfItsFile)
{
    EXPECT_EQ(JobName::Checked("table.zpjob"), "table");
    EXPECT_EQ(ZuTest::RefusalOf([] { JobName::Checked(".zpjob"); }).status, Zu::Status::BAD_ARGUMENT);
}

} // namespace ZuHost
