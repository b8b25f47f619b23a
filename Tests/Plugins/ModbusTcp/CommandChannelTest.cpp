#include "Plugins/ModbusTcp/CommandChannel.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"
#include "Tests/Plugins/ModbusTcp/FakeCommandRunner.h"

#include <string>
#include <vector>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

class CommandChannelTest : public BlockFixture
{
protected:
    using Values = std::vector<uint16>;
    using Commands = std::vector<std::string>;

    ModbusException Write(std::size_t offset, Values const& values, bool isBigEndian = true)
    {
        return channel.Write(*block, isBigEndian, offset, values);
    }

    void ExpectResult(uint16 requestId, ControlRegisterCommandStatus status)
    {
        EXPECT_EQ(channel.LastResult().requestId, requestId);
        EXPECT_EQ(channel.LastResult().status, status);
    }

    std::shared_ptr<Block> block = Place("ControlInput", 0);
    FakeCommandRunner runner;
    CommandChannel channel{runner};
};

TEST_F(CommandChannelTest, HasNoResultBeforeTheFirstCommand)
{
    ExpectResult(0, CommandStatusNone);
}

TEST_F(CommandChannelTest, TakesACommandWithANewRequestId)
{
    EXPECT_EQ(Write(0, {7, 1}), ModbusException::NONE);

    EXPECT_EQ(runner.commands, (Commands{"7:1:"}));
    ExpectResult(7, CommandStatusDone);
    EXPECT_EQ(channel.TakenCount(), 1u);
}

TEST_F(CommandChannelTest, TakesTheSameCommandAgainOnlyUnderAnotherRequestId)
{
    Write(0, {7, 1});
    Write(0, {7, 1});
    EXPECT_EQ(runner.commands, (Commands{"7:1:"}));

    Write(0, {8, 1});

    EXPECT_EQ(runner.commands, (Commands{"7:1:", "8:1:"}));
    ExpectResult(8, CommandStatusDone);
}

TEST_F(CommandChannelTest, TakesAnotherCommandUnderTheSameRequestId)
{
    Write(0, {7, 1});
    Write(1, {2});

    EXPECT_EQ(runner.commands, (Commands{"7:1:", "7:2:"}));
}

TEST_F(CommandChannelTest, TakesAJobWhoseNameCameBefore)
{
    Write(2, {'j', 'o', 'b', 0});
    EXPECT_TRUE(runner.commands.empty());

    Write(0, {9, 5});

    EXPECT_EQ(runner.commands, (Commands{"9:5:job"}));
}

TEST_F(CommandChannelTest, JudgesAWriteWithAllItsRegistersIn)
{
    Write(0, {9, 5, 'a', 'b', 0});

    EXPECT_EQ(runner.commands, (Commands{"9:5:ab"}));
}

TEST_F(CommandChannelTest, UnderstandsBothByteOrders)
{
    assembly.ChangeBigEndianSupportedBlocks(false);

    Write(0, {0x0102, 5, 'a', 'b', 0}, false);

    EXPECT_EQ(runner.commands, (Commands{"258:5:ab"}));
    EXPECT_EQ(channel.Written()[0], 0x0102);
}

TEST_F(CommandChannelTest, FailsAJobWithoutAName)
{
    EXPECT_EQ(Write(0, {9, 5}), ModbusException::NONE);

    EXPECT_TRUE(runner.commands.empty());
    ExpectResult(9, CommandStatusFailed);
}

TEST_F(CommandChannelTest, FailsWhatIsRefused)
{
    runner.refuses = true;

    EXPECT_EQ(Write(0, {11, 3}), ModbusException::NONE);

    ExpectResult(11, CommandStatusFailed);
    EXPECT_EQ(runner.commands, (Commands{"11:3:"}));
}

TEST_F(CommandChannelTest, TakesAndWritesNothingWhileAnOperationRuns)
{
    Write(0, {7, 3});
    runner.status = CommandStatusInProgress;

    EXPECT_EQ(Write(0, {8, 2}), ModbusException::SERVER_DEVICE_BUSY);

    EXPECT_EQ(channel.Written()[0], 7);
    EXPECT_EQ(channel.Written()[1], 3);
    ExpectResult(7, CommandStatusInProgress);
    runner.status = CommandStatusDone;
    EXPECT_EQ(Write(0, {8, 2}), ModbusException::NONE);
    EXPECT_EQ(runner.commands, (Commands{"7:3:", "8:2:"}));
}

TEST_F(CommandChannelTest, RunsACommandWithoutARequestEachTime)
{
    Write(0, {7, 1, 'x'});

    EXPECT_EQ(channel.Run(*block, true, 6), ModbusException::NONE);
    EXPECT_EQ(channel.Run(*block, true, 6), ModbusException::NONE);

    EXPECT_EQ(runner.commands, (Commands{"7:1:", "0:6:", "0:6:"}));
    ExpectResult(0, CommandStatusDone);
    EXPECT_EQ(channel.Written()[0], 0);
    EXPECT_EQ(channel.Written()[1], 0);
    Write(2, {'y'}); // finds no other command in the registers
    EXPECT_EQ(channel.TakenCount(), 3u);
    Write(0, {8, 1});
    EXPECT_EQ(runner.commands.back(), "8:1:");
}

TEST_F(CommandChannelTest, RunsALoadWithTheTextInTheRegisters)
{
    EXPECT_EQ(channel.Run(*block, true, 5), ModbusException::NONE);
    ExpectResult(0, CommandStatusFailed); // there is no name

    Write(2, {'a', 'b', 0}); // loads nothing by itself
    EXPECT_EQ(channel.Run(*block, true, 5), ModbusException::NONE);

    EXPECT_EQ(runner.commands, (Commands{"0:5:ab"}));
}

TEST_F(CommandChannelTest, RunsNothingWhileAnOperationRuns)
{
    Write(0, {7, 3});
    EXPECT_EQ(channel.RunningCommand(), 0);
    runner.status = CommandStatusInProgress;

    EXPECT_EQ(channel.Run(*block, true, 2), ModbusException::SERVER_DEVICE_BUSY);

    EXPECT_EQ(channel.RunningCommand(), 3);
    EXPECT_EQ(channel.Written()[0], 7);
    EXPECT_EQ(channel.Written()[1], 3);
    EXPECT_EQ(runner.commands, (Commands{"7:3:"}));
}

TEST_F(CommandChannelTest, WritesNothingThatDoesNotFitWhole)
{
    EXPECT_EQ(Write(65, {1, 2}), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(channel.Written()[65], 0);

    EXPECT_EQ(Write(65, {1}), ModbusException::NONE);
    EXPECT_EQ(channel.Written()[65], 1);
}

} // namespace ModbusTcp
