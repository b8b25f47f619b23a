#include "Host/Operation/OperationLog.h"

#include "wApi/wTime.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using Result = OperationLog::Result;

namespace
{

OperationLog::Operation Named(std::string what, bool isOfClient)
{
    OperationLog::Operation operation;
    operation.what = std::move(what);
    operation.isOfClient = isOfClient;
    operation.beginUsec = wTime_NowUsec();
    return operation;
}

} // namespace

TEST(OperationLog, NumbersOperationsFromOneOn)
{
    OperationLog log;

    EXPECT_EQ(log.Add(Named("a", true)), 1u);
    EXPECT_EQ(log.Add(Named("b", true)), 2u);

    ASSERT_EQ(log.All().size(), 2u);
    EXPECT_EQ(log.All()[0].what, "b");
    EXPECT_EQ(log.All()[1].what, "a");
    EXPECT_EQ(log.Find(1)->what, "a");
    EXPECT_FALSE(log.Find(3).has_value());
    EXPECT_EQ(log.Find(1)->since.size(), std::string("2026-01-31T23:59:59.999Z").size());
}

TEST(OperationLog, KeepsTheLastHundred)
{
    OperationLog log;
    for (int i = 0; i < 101; ++i)
    {
        log.Add(Named("x", true));
    }

    EXPECT_EQ(log.All().size(), OperationLog::MAX_KEPT);
    EXPECT_FALSE(log.Find(1).has_value());
    EXPECT_TRUE(log.Find(2).has_value());
    EXPECT_TRUE(log.Find(101).has_value());
}

TEST(OperationLog, EndsTheOldestRunningOperationOfAClient)
{
    OperationLog log;
    log.Add(Named("of a protocol", false));
    log.Add(Named("first", true));
    log.Add(Named("second", true));

    EXPECT_EQ(log.EndOldest(Result::FAILED, -997, "no", 5)->what, "first");
    EXPECT_EQ(log.EndOldest(Result::DONE, 0, "", 6)->what, "second");
    EXPECT_FALSE(log.EndOldest(Result::DONE, 0, "", 7).has_value());

    EXPECT_EQ(log.Find(2)->result, Result::FAILED);
    EXPECT_EQ(log.Find(2)->status, -997);
    EXPECT_EQ(log.Find(2)->text, "no");
    EXPECT_EQ(log.Find(2)->endUsec, 5u);
    EXPECT_EQ(log.Find(3)->result, Result::DONE);
}

TEST(OperationLog, ForgetsARefusedOperationAndDoesNotUseItsNumberAgain)
{
    OperationLog log;
    log.Add(Named("a", true));
    log.Remove(log.Add(Named("refused", true)));

    EXPECT_EQ(log.All().size(), 1u);
    EXPECT_EQ(log.Add(Named("b", true)), 3u);
}

} // namespace ZuHost
