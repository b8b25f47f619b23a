#include "wApi/wString.h"
#include "wApi/wTypes.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

TEST(wString, SetsBytes)
{
    std::array<uint8, 4> bytes{1, 2, 3, 4};

    EXPECT_EQ(wMemSet(bytes.data(), 0xAB, 3), Zu::Status::SUCCESS);

    EXPECT_EQ(bytes, (std::array<uint8, 4>{0xAB, 0xAB, 0xAB, 4}));
    EXPECT_EQ(wMemSet(nullptr, 0, 0), Zu::Status::SUCCESS);
    EXPECT_EQ(wMemSet(nullptr, 0, 1), Zu::Status::BAD_ARGUMENT);
}

TEST(wString, ComparesUpToTheEnd)
{
    EXPECT_TRUE(wStrEquals("job\0one", "job\0two"));
    EXPECT_FALSE(wStrEquals("job", "jobs"));
    EXPECT_FALSE(wStrEquals("job", nullptr));
    EXPECT_FALSE(wStrEquals(nullptr, ""));
    EXPECT_TRUE(wStrEquals(nullptr, nullptr));
}

TEST(wString, CountsTheBytesBeforeTheEnd)
{
    EXPECT_EQ(wStrLength("abc\0de"), 3u);
    EXPECT_EQ(wStrLength(""), 0u);
    EXPECT_EQ(wStrLength(nullptr), 0u);
}

TEST(wString, FindsTheFirstMatch)
{
    char const* const text = "a.zpjob.zpjob";

    EXPECT_EQ(wStrFindFirst(text, ".zpjob"), text + 1);
    EXPECT_EQ(wStrFindFirst(text, ""), text);
    EXPECT_EQ(wStrFindFirst(text, ".zpjobs"), nullptr);
    EXPECT_EQ(wStrFindFirst(nullptr, "a"), nullptr);
    EXPECT_EQ(wStrFindFirst(text, nullptr), nullptr);
}

TEST(wString, AppendsWhatFits)
{
    std::array<char, 8> text{"ab"};

    EXPECT_EQ(wStrCat(text.data(), text.size(), "cdefg"), Zu::Status::SUCCESS);

    EXPECT_STREQ(text.data(), "abcdefg");
    EXPECT_EQ(wStrCat(text.data(), text.size(), ""), Zu::Status::SUCCESS);
}

TEST(wString, WritesNothingThatDoesNotFit)
{
    std::array<char, 8> text{"ab"};

    EXPECT_EQ(wStrCat(text.data(), text.size(), "cdefgh"), Zu::Status::WRONG_BUFFER_SIZE);

    EXPECT_EQ(text, (std::array<char, 8>{"ab"}));
}

TEST(wString, RefusesABufferInWhichNoTextEnds)
{
    std::array<char, 2> text{'a', 'b'};

    EXPECT_EQ(wStrCat(text.data(), text.size(), ""), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wStrCat(text.data(), 0, ""), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wStrCat(nullptr, 2, ""), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wStrCat(text.data(), text.size(), nullptr), Zu::Status::BAD_ARGUMENT);
}
