#include "Host/Log/LogBudget.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

constexpr uint64 BEGIN = 1'000'000;

Zu::Logging::Entry EntryOf(int line, char const* text)
{
    return {line, "Some.cpp", Zu::Logging::FLAGS_ERROR, "The::Label", text};
}

uint64 CountTaken(LogBudget& budget, Zu::Logging::Entry const& entry, uint64 lines, uint64 nowUsec)
{
    uint64 taken = 0;
    for (uint64 i = 0; i < lines; ++i)
    {
        taken += budget.Take(entry, nowUsec) ? 1 : 0;
    }
    return taken;
}

} // namespace

TEST(LogBudget, LimitsTheLinesOfOnePlaceAndNotThoseOfAnother)
{
    LogBudget budget;

    EXPECT_EQ(CountTaken(budget, EntryOf(1, "flood"), 5000, BEGIN), LogBudget::MAX_LINES);
    EXPECT_EQ(CountTaken(budget, EntryOf(2, "calm"), 10, BEGIN), 10u);
}

TEST(LogBudget, GathersWhatAPlaceHasLeftOut)
{
    LogBudget budget;
    CountTaken(budget, EntryOf(1, "written"), LogBudget::MAX_LINES, BEGIN);
    CountTaken(budget, EntryOf(1, "first"), 1, BEGIN);
    CountTaken(budget, EntryOf(1, "second"), 4212, BEGIN);
    CountTaken(budget, EntryOf(2, "calm"), 10, BEGIN);

    EXPECT_TRUE(budget.EndWindows(BEGIN + LogBudget::WINDOW_USEC - 1, false).empty());
    auto const ended = budget.EndWindows(BEGIN + LogBudget::WINDOW_USEC, false);

    ASSERT_EQ(ended.size(), 1u);
    EXPECT_EQ(ended[0].lines, 4213u);
    EXPECT_EQ(ended[0].seconds, 10u);
    EXPECT_EQ(ended[0].text, "first");
    EXPECT_EQ(ended[0].label, "The::Label");
    EXPECT_EQ(ended[0].flags, Zu::Logging::FLAGS_ERROR);
    EXPECT_TRUE(budget.Take(EntryOf(1, "again"), BEGIN + LogBudget::WINDOW_USEC));
    EXPECT_TRUE(budget.EndWindows(BEGIN + 3 * LogBudget::WINDOW_USEC, false).empty());
}

TEST(LogBudget, LimitsTheBytesButWritesOneLongLine)
{
    LogBudget budget;
    std::string const tooLong(LogBudget::MAX_BYTES + 1, 'x');
    std::string const half(LogBudget::MAX_BYTES / 2, 'x');

    EXPECT_EQ(CountTaken(budget, EntryOf(1, tooLong.c_str()), 10, BEGIN), 1u);
    EXPECT_EQ(CountTaken(budget, EntryOf(2, half.c_str()), 10, BEGIN), 2u);
}

TEST(LogBudget, EndsAllWindowsWhenAskedTo)
{
    LogBudget budget;
    CountTaken(budget, EntryOf(1, "flood"), LogBudget::MAX_LINES + 7, BEGIN);

    auto const ended = budget.EndWindows(BEGIN + 2'000'000, true);

    ASSERT_EQ(ended.size(), 1u);
    EXPECT_EQ(ended[0].lines, 7u);
    EXPECT_EQ(ended[0].seconds, 2u);
}

TEST(LogBudget, KeepsABoundedNumberOfPlaces)
{
    LogBudget budget;
    uint64 taken = 0;
    for (int line = 0; line < 100'000; ++line)
    {
        taken += budget.Take(EntryOf(line, "text"), BEGIN) ? 1 : 0;
    }

    EXPECT_EQ(taken, LogBudget::MAX_PLACES + LogBudget::MAX_LINES);
}

} // namespace ZuHost
