#include "Plugins/ModbusTcp/RegisterMap.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"
#include "Tests/Plugins/ModbusTcp/FakeCommandRunner.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

/// The command block at 10, its answer at 80, state bits at 90.
class RegisterMapTest : public BlockFixture
{
protected:
    using Registers = std::vector<uint16>;
    using Commands = std::vector<std::string>;

    RegisterMapTest()
    {
        Place("ControlInput", 10);
        Place("ControlOutput", 80);
        Place("StateBits", 90);
        map.Install(RegisterLayout::Take(assembly));
    }

    Registers Read(uint16 first, std::size_t count)
    {
        Registers registers(count, 0xAAAA);
        map.Read(first, registers);
        return registers;
    }

    std::unique_ptr<RegisterImage> image = std::make_unique<RegisterImage>();
    ModbusCounters counters;
    ResultEncoder encoder{*image, counters};
    FakeCommandRunner runner;
    PluginCommon::StateFetcher::State state;
    RegisterMap map{{.image = *image,
                     .results = encoder,
                     .commands = runner,
                     .latestState = [this](std::string const&) { return state; },
                     .mapIdentity =
                         [] {
                             return MapIdentity{"map", 3, 7, ""};
                         },
                     .counters = counters}};
};

TEST_F(RegisterMapTest, MasksARegisterOfTheCommandBlock)
{
    Registers const text = {0x12};
    EXPECT_EQ(map.Write(14, text), ModbusException::NONE);

    EXPECT_EQ(map.MaskWrite(14, 0xF2, 0x25), ModbusException::NONE);

    EXPECT_EQ(Read(14, 1), Registers{0x17}); // (0x12 & 0xF2) | (0x25 & ~0xF2)
    EXPECT_EQ(map.MaskWrite(14, 0, 0xFFFF), ModbusException::NONE);
    EXPECT_EQ(Read(14, 1), Registers{0xFFFF});
    EXPECT_EQ(map.MaskWrite(14, 0xFFFF, 0x1234), ModbusException::NONE);
    EXPECT_EQ(Read(14, 1), Registers{0xFFFF});
    EXPECT_EQ(counters.registersWritten, 4u);
}

TEST_F(RegisterMapTest, TakesACommandThatAMaskMakes)
{
    EXPECT_EQ(map.MaskWrite(11, 0, 2), ModbusException::NONE);

    EXPECT_EQ(runner.commands, (Commands{"0:2:"}));
    EXPECT_EQ(counters.commands, 1u);
}

TEST_F(RegisterMapTest, MasksNoRegisterThatIsNotWritable)
{
    for (uint16 const address : Registers{0, 9, 76, 80, 90, 9999, 65535})
    {
        EXPECT_EQ(map.MaskWrite(address, 0, 1), ModbusException::ILLEGAL_DATA_ADDRESS) << address;
    }
    runner.status = CommandStatusInProgress;
    EXPECT_EQ(map.MaskWrite(14, 0, 1), ModbusException::SERVER_DEVICE_BUSY);
    EXPECT_EQ(Read(14, 1), Registers{0});
}

TEST_F(RegisterMapTest, RunsTheCommandOfACoil)
{
    EXPECT_EQ(map.WriteCoils(1u << 1), ModbusException::NONE);
    EXPECT_EQ(map.WriteCoils(1u << 6), ModbusException::NONE);
    EXPECT_EQ(map.WriteCoils(1u << 6), ModbusException::NONE);

    EXPECT_EQ(runner.commands, (Commands{"0:1:", "0:6:", "0:6:"}));
    EXPECT_EQ(Read(80, 2), (Registers{0, CommandStatusDone}));
    EXPECT_EQ(Read(10, 2), (Registers{0, 0}));
    EXPECT_EQ(counters.commands, 3u);
}

TEST_F(RegisterMapTest, RefusesCoilsThatAreNoCommandOrTwo)
{
    EXPECT_EQ(map.WriteCoils(1), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(map.WriteCoils(1u << 7), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(map.WriteCoils(0x8002), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(map.WriteCoils(0x0006), ModbusException::ILLEGAL_DATA_VALUE);

    EXPECT_TRUE(runner.commands.empty());
    EXPECT_EQ(counters.commands, 0u);
}

TEST_F(RegisterMapTest, HasNoCommandCoilsWithoutACommandBlock)
{
    RegisterMap empty({.image = *image,
                       .results = encoder,
                       .commands = runner,
                       .latestState = [this](std::string const&) { return state; },
                       .mapIdentity = [] { return MapIdentity{}; },
                       .counters = counters});

    EXPECT_EQ(empty.WriteCoils(2), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(empty.MaskWrite(0, 0, 0), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(empty.ReadCoils(), 0);
}

TEST_F(RegisterMapTest, ShowsACommandThatRunsInItsCoil)
{
    EXPECT_EQ(map.ReadCoils(), 0);
    map.WriteCoils(1u << 3);
    EXPECT_EQ(map.ReadCoils(), 0); // it has ended

    runner.status = CommandStatusInProgress;

    EXPECT_EQ(map.ReadCoils(), 0x0009);
    EXPECT_EQ(map.WriteCoils(1u << 2), ModbusException::SERVER_DEVICE_BUSY);
    EXPECT_EQ(Read(90, 1), Registers{0x0101}); // ready; a command runs
    EXPECT_EQ(Read(80, 2), (Registers{0, CommandStatusInProgress}));
    EXPECT_EQ(runner.commands, (Commands{"0:3:"}));
}

TEST_F(RegisterMapTest, ShowsTheStatesInBits)
{
    EXPECT_EQ(Read(89, 3), (Registers{0, 0x0001, 0}));

    state.system.stateByte0 = 1;
    state.scanner.scannerByte1 = 1;

    EXPECT_EQ(Read(89, 3), (Registers{0, 0x0022, 0}));
}

TEST_F(RegisterMapTest, NamesTheJobThatIsLoaded)
{
    EXPECT_EQ(map.Identity().job, "");
    std::strncpy(state.system.jobFileName, "night shift", sizeof state.system.jobFileName);
    state.system.jobFileNameLength = 11;

    MapIdentity const identity = map.Identity();

    EXPECT_EQ(identity.job, "night shift");
    EXPECT_EQ(identity.name, "map");
    EXPECT_EQ(identity.blockCount, 3u);
    EXPECT_EQ(identity.fingerprint, 7u);
    state.system.jobFileNameLength = 255; // more than there is room for
    EXPECT_EQ(map.Identity().job.size(), 64u);
}

TEST_F(RegisterMapTest, WritesTheAcknowledgeRegisterOfAQueue)
{
    Place("ResultQueue", 300, "a");
    auto const layout = RegisterLayout::Take(assembly);
    encoder.Install(layout);
    map.Install(layout);
    for (int i = 1; i <= 3; ++i)
    {
        ZuTest::TestBatch batch;
        batch.Add(ZuTest::TestFrame().Measurement("a", i / 1000.0));
        encoder.Process(batch.List());
    }
    uint16 const number = Read(301, 1)[0];
    auto const write = [this](uint16 address, Registers const& values) { return map.Write(address, values); };
    EXPECT_EQ(Read(90, 1), Registers{0x0801}); // ready; a result waits

    EXPECT_EQ(write(300, {number}), ModbusException::NONE);
    EXPECT_EQ(Read(300, 3), (Registers{number, Read(301, 1)[0], 2}));
    EXPECT_EQ(Read(317, 1), Registers{2});
    EXPECT_EQ(write(300, {static_cast<uint16>(number + 9)}), ModbusException::ILLEGAL_DATA_VALUE);
    EXPECT_EQ(write(300, {number, 0}), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(write(301, {number}), ModbusException::ILLEGAL_DATA_ADDRESS);
    uint16 const second = Read(301, 1)[0];
    EXPECT_EQ(map.MaskWrite(300, 0, second), ModbusException::NONE);
    EXPECT_EQ(Read(300, 3), (Registers{second, Read(301, 1)[0], 1}));
    EXPECT_EQ(map.MaskWrite(300, 0xFFFF, 0), ModbusException::NONE); // the same number again
    EXPECT_EQ(map.MaskWrite(301, 0, 0), ModbusException::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(counters.registersWritten, 3u);
    runner.status = CommandStatusInProgress;
    EXPECT_EQ(write(300, {Read(301, 1)[0]}), ModbusException::NONE); // a command does not hold up results
}

} // namespace ModbusTcp
