#include "Host/Watch/Watch.h"

#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "ZuControl/Control/ControlVitals.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace ZuHost
{

using Texts = std::vector<std::string>;
using ZuCommon::ProblemsManager;

class WatchTest : public testing::Test
{
protected:
    static constexpr uint64 BEGIN = 1'000'000'000;
    static constexpr uint64 SECOND = 1'000'000;
    static constexpr char const* DEAD =
        "a gets no more results, since it failed over one. Disable it and enable it again; if that does not help, "
        "restart the host.";
    static constexpr char const* HELD = "a does not come to an end with its results; newer ones wait for it.";

    WatchTest()
    {
        vitals.dispatchers = {{"a", false, 0}};
    }

    /// Runs one check of a healthy module, apart from the faults that the test has set.
    void LookAt(uint64 nowUsec)
    {
        vitals.metrics.lastDoneUsec = nowUsec;
        watch->Look(nowUsec);
    }

    Texts Problems() const
    {
        Texts texts;
        for (ProblemsManager::Problem const& problem : problems.List())
        {
            EXPECT_EQ(problem.severity, ProblemsManager::SEVERITY_ERROR);
            EXPECT_EQ(problem.source, "Watch");
            texts.push_back(problem.text);
        }
        return texts;
    }

    void ExpectFaults(Texts const& faults)
    {
        EXPECT_EQ(watch->Faults(), faults);
        EXPECT_EQ(Problems(), faults);
    }

    ZuTest::LogRecorder log;
    ProblemsManager problems;
    ZuControl::ControlVitals vitals;
    std::optional<Watch> watch{std::in_place, problems, [this] { return vitals; }, WatchLimits()};
};

TEST_F(WatchTest, SaysNothingWhileAllIsWell)
{
    LookAt(BEGIN);
    LookAt(BEGIN + Watch::PERIOD_USEC);

    ExpectFaults({});
    EXPECT_EQ(log.Lines(), std::vector<ZuTest::LogLine>{});
}

TEST_F(WatchTest, TellsItsListenerTheFaultsOfTheModuleAlone)
{
    std::vector<std::pair<std::set<std::string>, uint64>> heard;
    watch.emplace(
        problems, [this] { return vitals; }, WatchLimits(), [] { return std::set<std::string>{"no disk"}; });
    watch->SetListener([&heard](auto const& faults, uint64 nowUsec) { heard.emplace_back(faults, nowUsec); });

    LookAt(BEGIN);
    vitals.dispatchers[0].hasDied = true;
    LookAt(BEGIN + Watch::PERIOD_USEC);

    EXPECT_EQ(heard, (std::vector<std::pair<std::set<std::string>, uint64>>{{{}, BEGIN},
                                                                            {{DEAD}, BEGIN + Watch::PERIOD_USEC}}));
}

TEST_F(WatchTest, TellsAFaultOnceForAsLongAsItLasts)
{
    LookAt(BEGIN);
    vitals.dispatchers[0].hasDied = true;

    for (uint64 i = 1; i <= 5; ++i)
    {
        LookAt(BEGIN + i * Watch::PERIOD_USEC);
        ExpectFaults({DEAD});
    }

    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::UserError(DEAD), ZuTest::Error("ZuHost::Watch::TellNew", DEAD)}));
}

TEST_F(WatchTest, TakesTheProblemAwayWhenTheFaultIsOver)
{
    auto const others =
        problems.Add(ProblemsManager::SEVERITY_ERROR, "Watch", "of somebody else"); // must still be there at the end
    vitals.dispatchers[0].hasDied = true;
    LookAt(BEGIN);
    log.Clear();

    vitals.dispatchers[0].hasDied = false;
    LookAt(BEGIN + Watch::PERIOD_USEC);

    EXPECT_EQ(watch->Faults(), Texts{});
    EXPECT_EQ(Problems(), Texts{"of somebody else"});
    EXPECT_EQ(log.Lines(), (std::vector{ZuTest::Info("ZuHost::Watch::Tell", std::string("This is over: ") + DEAD)}));
    problems.Remove(others);
}

TEST_F(WatchTest, TellsAFaultAnewThatHasComeBack)
{
    for (uint64 i = 0; i < 4; ++i)
    {
        vitals.dispatchers[0].hasDied = i % 2 == 0;
        LookAt(BEGIN + i * Watch::PERIOD_USEC);
    }

    EXPECT_EQ(log.CountOfText(DEAD), 4u); // told twice, each time as a user line and a developer line
    ExpectFaults({});
}

TEST_F(WatchTest, TellsOneFaultInThePlaceOfAnother)
{
    vitals.dispatchers[0].hasDied = true;
    LookAt(BEGIN);

    vitals.dispatchers[0] = {"a", false, BEGIN - 9 * SECOND};
    LookAt(BEGIN + Watch::PERIOD_USEC);

    ExpectFaults({HELD});
}

TEST_F(WatchTest, GivesOthersAsMuchLongerAsItComesLateItself)
{
    LookAt(BEGIN);
    vitals.dispatchers[0].busySinceUsec = BEGIN + 1;

    LookAt(BEGIN + 30 * SECOND); // as after a suspend of the machine

    ExpectFaults({});
    LookAt(BEGIN + 30 * SECOND + Watch::PERIOD_USEC);
    ExpectFaults({HELD});
}

TEST_F(WatchTest, FindsAFaultAlsoOnAMachineThatAlwaysLetsItComeLate)
{
    LookAt(BEGIN);
    vitals.dispatchers[0].busySinceUsec = BEGIN + 1;

    LookAt(BEGIN + 4 * SECOND);
    LookAt(BEGIN + 8 * SECOND);

    ExpectFaults({HELD});
}

TEST_F(WatchTest, TakesItsProblemsAlongWhenItGoes)
{
    vitals.dispatchers[0].hasDied = true;
    LookAt(BEGIN);

    watch.reset();

    EXPECT_EQ(problems.Count(), 0u);
}

TEST_F(WatchTest, LooksByItselfOnceItIsStartedAndUntilItGoes)
{
    ZuTest::Latch looked;
    std::atomic<bool> hasGone{false};
    bool hasLookedTooLate = false;
    watch.emplace(
        problems,
        [&] {
            hasLookedTooLate |= hasGone;
            looked.Open();
            return ZuControl::ControlVitals();
        },
        WatchLimits());
    uint64 const beginUsec = wTime_NowUsec();

    watch->Start();

    ASSERT_TRUE(looked.Wait());
    EXPECT_GE(wTime_NowUsec() - beginUsec, Watch::PERIOD_USEC);
    watch.reset();
    hasGone = true;
    EXPECT_FALSE(hasLookedTooLate);
}

TEST_F(WatchTest, GoesOnWhenAskingFailed)
{
    ZuTest::Latch lookedAgain;
    std::atomic<int> looks{0};
    watch.emplace(
        problems,
        [&]() -> ZuControl::ControlVitals {
            if (++looks == 2)
            {
                lookedAgain.Open();
            }
            throw std::runtime_error("no memory");
        },
        WatchLimits());

    watch->Start();

    EXPECT_TRUE(lookedAgain.Wait());
    watch.reset(); // before the objects that it watches
}

TEST_F(WatchTest, IsAskedWhileItLooks)
{
    vitals.dispatchers[0].hasDied = true;
    watch->Start();

    bool const isFound = [this] {
        uint64 const beginUsec = wTime_NowUsec();
        while (watch->Faults().empty() && wTime_NowUsec() - beginUsec < 30 * SECOND)
        {
            std::this_thread::yield();
        }
        return !watch->Faults().empty();
    }();

    EXPECT_TRUE(isFound);
}

} // namespace ZuHost
