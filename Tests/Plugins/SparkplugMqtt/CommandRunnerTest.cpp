#include "Plugins/SparkplugMqtt/CommandRunner.h"
#include "Support/CallLog.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeSystemInterface.h"
#include "Support/Latch.h"
#include "ZuApi/Exception.h"
#include "ZuControl/Control/ControlProtocolOperations.h"

#include <gtest/gtest.h>

#include <vector>

namespace SparkplugMqtt
{

using namespace ZuControl::ControlProtocol;

class CommandRunnerTest : public testing::Test
{
protected:
    static constexpr ZuControl::ZuEthernetProtocol OWN{103};

    std::vector<CommandResult> Results()
    {
        std::vector<CommandResult> results;
        CommandResult result;
        while (runner.TakeResult(result))
        {
            results.push_back(result);
        }
        return results;
    }

    ZuTest::CallLog calls;
    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngineInterface{calls};
    ZuControl::ControlProtocolOperations operations{systemInterface, scanEngineInterface};
    ZuTest::Latch ended;
    bool isStarting = false; // whether a start begins an operation of the module
    bool isRefused = false;
    std::vector<CommandRunner::Command> started;
    CommandRunner runner{operations,
                         OWN,
                         {.start =
                              [this](CommandRunner::Command const& command) {
                                  if (isRefused)
                                  {
                                      ZU_THROW(Zu::Status::BUSY, "another operation runs");
                                  }
                                  started.push_back(command);
                                  if (isStarting)
                                  {
                                      operations.StartScan(OWN);
                                  }
                              },
                          .ended = [this] { ended.Open(); }}};
};

TEST_F(CommandRunnerTest, ACommandHasTwoResults)
{
    isStarting = true;
    runner.Begin({7, "Command/Load Job", CommandLoadJob, "line7", ""});
    ASSERT_TRUE(ended.Wait());
    EXPECT_EQ(Results(), (std::vector<CommandResult>{{7, "Command/Load Job", CommandStatusInProgress, ""},
                                                     {7, "Command/Load Job", CommandStatusDone, ""}}));
    ASSERT_EQ(started.size(), 1U);
    EXPECT_EQ(started[0].commandId, CommandLoadJob);
    EXPECT_STREQ(started[0].text, "line7");
}

TEST_F(CommandRunnerTest, ARefusedCommandFailsWithItsReason)
{
    isRefused = true;
    runner.Begin({7, "Command/Start", CommandStart, "", ""});
    EXPECT_EQ(Results(),
              (std::vector<CommandResult>{{7, "Command/Start", CommandStatusInProgress, ""},
                                          {7, "Command/Start", CommandStatusFailed, "another operation runs"}}));
    isRefused = false;
    runner.Begin({8, "Command/Start", CommandStart, "", ""});
    EXPECT_EQ(started.size(), 1U); // the refused one does not count as running
}

TEST_F(CommandRunnerTest, OneCommandRunsAtATime)
{
    runner.Begin({7, "Command/Align", CommandAlign, "", ""});
    runner.Begin({8, "Command/Start", CommandStart, "", ""});
    EXPECT_EQ(Results(), (std::vector<CommandResult>{
                             {7, "Command/Align", CommandStatusInProgress, ""},
                             {8, "Command/Start", CommandStatusFailed, "A command of a host is still running"}}));
    EXPECT_EQ(started.size(), 1U);
}

TEST_F(CommandRunnerTest, ACommandThatCannotBeCarriedOutIsNotStarted)
{
    runner.Begin({7, "Command/Dance", CommandNone, "", "There is no writable metric Command/Dance"});
    runner.Begin({8, "", CommandNone, "", ""}); // no command at all
    EXPECT_EQ(Results(), (std::vector<CommandResult>{
                             {7, "Command/Dance", CommandStatusFailed, "There is no writable metric Command/Dance"}}));
    EXPECT_EQ(started.size(), 0U);
}

TEST_F(CommandRunnerTest, AnEndThatNoCommandHasBegunIsIgnored)
{
    isStarting = true;
    runner.Begin({7, "Command/Start", CommandStart, "", ""});
    ASSERT_TRUE(ended.Wait());
    Results();
    operations.StopScan(OWN); // begun elsewhere
    isStarting = false;
    EXPECT_EQ(Results(), std::vector<CommandResult>{});
}

} // namespace SparkplugMqtt
