#include "ZuCommon/Problems.h"

#include <gtest/gtest.h>

#include <thread>

namespace ZuCommon
{

TEST(ProblemsManager, ListsWhatStandsTheOldestFirst)
{
    ProblemsManager problems;

    problems.Add(1, "Protocol", "%1$s service failed to start.", "Modbus TCP");
    problems.Add(0, "ZuControl", "Control drops detected for %1$s protocol.", "100%s");

    auto const list = problems.List();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].severity, ProblemsManager::SEVERITY_ERROR);
    EXPECT_EQ(list[0].source, "Protocol");
    EXPECT_EQ(list[0].text, "Modbus TCP service failed to start.");
    EXPECT_EQ(list[1].severity, ProblemsManager::SEVERITY_WARNING);
    EXPECT_EQ(list[1].text, "Control drops detected for 100%s protocol.");
    EXPECT_GT(list[0].sinceUsec, uint64{1'500'000'000} * 1'000'000);
    EXPECT_LE(list[0].sinceUsec, list[1].sinceUsec);
}

TEST(ProblemsManager, RemovesTheNamedProblemOnly)
{
    ProblemsManager problems;
    auto const first = problems.Add(1, "a", "first");
    problems.Add(1, "a", "second");

    problems.Remove(first);
    problems.Remove(first);
    problems.Remove({});

    auto const list = problems.List();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].text, "second");
}

TEST(ProblemsManager, TakesNullForAnEmptyText)
{
    ProblemsManager problems;

    problems.Add(0, nullptr, nullptr);

    EXPECT_EQ(problems.List().at(0).source, "");
    EXPECT_EQ(problems.List().at(0).text, "");
}

TEST(ProblemsManager, IsSafeToUseFromSeveralThreads)
{
    ProblemsManager problems;
    auto const work = [&problems] {
        for (int i = 0; i < 200; ++i)
        {
            auto const problem = problems.Add(0, "x", "%1$d", i);
            problems.List();
            problems.Remove(problem);
        }
    };

    std::thread other(work);
    work();
    other.join();

    EXPECT_EQ(problems.Count(), 0U);
}

} // namespace ZuCommon
