#include "Plugins/AsciiTcp/OperationRunner.h"
#include "Support/CallLog.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeSystemInterface.h"
#include "Support/Latch.h"
#include "Support/Refusal.h"
#include "ZuControl/Control/ControlProtocolOperations.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace AsciiTcp
{

constexpr ZuControl::ZuEthernetProtocol OWN{2};
constexpr ZuControl::ZuEthernetProtocol OTHER{100};

class OperationRunnerTest : public testing::Test
{
protected:
    uint64 BeginStart()
    {
        return runner->Begin([this] { operations.StartScan(OWN); });
    }

    /// Repeats the attempt until the previous operation has ended, with a bound.
    template <typename Action>
    static bool IsTakenAtLast(Action action)
    {
        auto const latest = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < latest)
        {
            if (ZuTest::RefusalOf(action).status == Zu::Status::SUCCESS)
            {
                return true;
            }
            std::this_thread::yield();
        }
        return false;
    }

    ZuTest::Latch mayEnd; // outlives the worker that waits for it
    ZuTest::CallLog calls;
    ZuTest::CallLog ends;
    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngineInterface{calls};
    ZuControl::ControlProtocolOperations operations{systemInterface, scanEngineInterface};
    std::unique_ptr<OperationRunner> runner =
        std::make_unique<OperationRunner>(operations, OWN, [this](uint64 ticket, bool isDone) {
            ends.Add(std::to_string(ticket) + (isDone ? " done" : " failed"));
        });
};

TEST_F(OperationRunnerTest, TellsTheEndUnderItsTicket)
{
    EXPECT_EQ(BeginStart(), 1u);
    ASSERT_TRUE(ends.WaitFor("1 done"));

    systemInterface.on["Stop"] = [] { ZU_THROW(Zu::Status::FAILURE); };
    EXPECT_EQ(runner->Begin([this] { operations.StopScan(OWN); }), 2u);

    EXPECT_TRUE(ends.WaitFor("2 failed"));
    EXPECT_EQ(ends.All().size(), 2u);
}

TEST_F(OperationRunnerTest, RefusesASecondWhileTheFirstRuns)
{
    systemInterface.on["Start"] = [this] { mayEnd.Wait(); };
    BeginStart();

    EXPECT_EQ(ZuTest::RefusalOf([this] { BeginStart(); }),
              (ZuTest::Refusal{-976, "An operation that a client of this service began is still running"}));

    mayEnd.Open();
    EXPECT_TRUE(ends.WaitFor("1 done"));
}

TEST_F(OperationRunnerTest, IsFreeAgainWhenTheStartIsRefused)
{
    systemInterface.on["Stop"] = [this] { mayEnd.Wait(); };
    operations.StopScan(OTHER);

    EXPECT_EQ(ZuTest::RefusalOf([this] { BeginStart(); }).status, -976);

    mayEnd.Open();
    uint64 ticket = 0;
    ASSERT_TRUE(IsTakenAtLast([&] { ticket = BeginStart(); }));
    EXPECT_TRUE(ends.WaitFor(std::to_string(ticket) + " done"));
    EXPECT_EQ(ends.All().size(), 1u);
}

TEST_F(OperationRunnerTest, KeepsSilentAboutEndsThatAreNotItsOwn)
{
    operations.AddOpEndEventHandler(OWN, [this](int) { ends.Add("the handler behind it"); });

    operations.StartScan(OWN); // not begun by the runner

    ASSERT_TRUE(ends.WaitFor("the handler behind it"));
    EXPECT_EQ(ends.All().size(), 1u);
}

TEST_F(OperationRunnerTest, TellsNothingOnceItIsGone)
{
    systemInterface.on["Start"] = [this] { mayEnd.Wait(); };
    operations.AddOpEndEventHandler(OWN, [this](int) { ends.Add("the handler behind it"); });
    BeginStart();

    runner.reset();

    mayEnd.Open();
    ASSERT_TRUE(ends.WaitFor("the handler behind it"));
    EXPECT_EQ(ends.All().size(), 1u);
}

} // namespace AsciiTcp
