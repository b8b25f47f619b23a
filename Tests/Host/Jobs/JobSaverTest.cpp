#include "Host/Jobs/JobSaver.h"

#include "Support/CallLog.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace ZuHost
{

namespace
{

constexpr JobSaver::Pace FAST{1'000, 1'000, 4'000};

} // namespace

TEST(JobSaver, SavesWhenSomethingHasChangedAndNotOtherwise)
{
    ZuTest::CallLog calls;
    JobSaver saver([&calls] { calls.Add("save"); }, FAST);
    saver.Start();

    saver.Note();
    ASSERT_TRUE(calls.WaitFor("save", 1));
    saver.Note();
    ASSERT_TRUE(calls.WaitFor("save", 2));
    saver.Stop();

    EXPECT_EQ(calls.Count("save"), 2U);
}

TEST(JobSaver, SavesWhatComesTogetherOnce)
{
    ZuTest::CallLog calls;
    JobSaver saver([&calls] { calls.Add("save"); }, {300'000, 1'000, 1'000});
    saver.Start();
    uint64 const begunUsec = wTime_NowUsec();

    for (int i = 0; i < 100; ++i)
    {
        saver.Note();
    }
    ASSERT_TRUE(calls.WaitFor("save", 1));

    EXPECT_GE(wTime_NowUsec() - begunUsec, 290'000U);
    saver.Stop();
    EXPECT_EQ(calls.Count("save"), 1U);
}

TEST(JobSaver, TriesAgainEverMoreSeldom)
{
    ZuTest::CallLog calls;
    std::atomic<int> failures{4};
    JobSaver saver(
        [&] {
            calls.Add("save");
            if (failures-- > 0)
            {
                throw std::runtime_error("no room");
            }
        },
        {1'000, 20'000, 40'000});
    saver.Start();
    uint64 const begunUsec = wTime_NowUsec();

    saver.Note();
    ASSERT_TRUE(calls.WaitFor("save", 5));

    EXPECT_GE(wTime_NowUsec() - begunUsec, 140'000U); // 20 ms, then 40 ms each time
    saver.Stop();
    EXPECT_EQ(calls.Count("save"), 5U);
}

TEST(JobSaver, TriesAgainBehindWhatIsNoException)
{
    ZuTest::CallLog calls;
    JobSaver saver(
        [&calls] {
            calls.Add("save");
            if (calls.Count("save") == 1)
            {
                throw 42;
            }
        },
        FAST);
    saver.Start();

    saver.Note();

    EXPECT_TRUE(calls.WaitFor("save", 2));
}

TEST(JobSaver, EndsWithoutSavingWhatIsNotDueYet)
{
    ZuTest::CallLog calls;
    JobSaver saver([&calls] { calls.Add("save"); }, {3'600'000'000, 1'000, 1'000});
    saver.Start();
    saver.Note();

    saver.Stop();
    saver.Stop();

    EXPECT_EQ(calls.Count("save"), 0U);
}

TEST(JobSaver, NeedNotEverBeStarted)
{
    JobSaver saver([] { FAIL(); }, FAST);
    saver.Note();
}

} // namespace ZuHost
