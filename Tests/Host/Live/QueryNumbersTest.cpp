#include "Host/Live/QueryNumbers.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using ZuTest::RefusalOf;

TEST(QueryNumbers, TakesNumbersAndLeavesOutWhatIsNotThere)
{
    QueryNumbers query("rate=2.5&&schema=true&points=7");

    EXPECT_EQ(query.Take("rate", 0.1, 25, 10), 2.5);
    EXPECT_EQ(query.TakeCount("points", 2, 100, 50), 7u);
    EXPECT_EQ(query.TakeCount("rows", 2, 100, 50), 50u);
    EXPECT_EQ(RefusalOf([&] { query.CheckAllTaken(); }).status, Zu::Status::SUCCESS);
}

TEST(QueryNumbers, ClampsWhatIsAboveTheRange)
{
    for (char const* const text : {"26", "1000000", "1e6", "1e999", "inf"})
    {
        QueryNumbers query(std::string("rate=") + text);
        EXPECT_EQ(query.Take("rate", 0.1, 25, 10), 25) << text;
    }
}

TEST(QueryNumbers, RefusesWhatIsBelowTheRangeOrNoNumber)
{
    for (char const* const text : {"0", "-1", "0.09", "1e-9", "-inf", "-1e999", "1e-999", "nan", "x", "", "1x", " 1"})
    {
        QueryNumbers query(std::string("rate=") + text);
        EXPECT_EQ(RefusalOf([&] { query.Take("rate", 0.1, 25, 10); }).status, Zu::Status::BAD_ARGUMENT) << text;
    }
    QueryNumbers query("rate=0");
    EXPECT_EQ(RefusalOf([&] { query.Take("rate", 0.1, 25, 10); }).text, "The parameter 'rate' is at least 0.1.");
}

TEST(QueryNumbers, RefusesUnknownParameters)
{
    QueryNumbers const query("speed=3");
    EXPECT_EQ(RefusalOf([&] { query.CheckAllTaken(); }).text, "There is no parameter 'speed' here.");
}

} // namespace ZuHost
