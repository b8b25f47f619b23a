#include "ZuCommon/Persistence.h"
#include "ZuControl/Control/ControlHardware.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Control/IControlHardware.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/Control/IControlScanEngineInterface.h"
#include "ZuControl/Control/IControlSystemInterface.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>
#include <vector>

// The layouts of records and the values of enumerators and constants that existing plug-ins were compiled with. A
// change to any of them breaks those plug-ins.

namespace ZuControl
{

using namespace ControlProtocol;

namespace
{

using Offsets = std::vector<std::size_t>;

template <typename Enumeration>
constexpr std::size_t WIDTH = sizeof(std::underlying_type_t<Enumeration>);

/// The numeric values of these enumerators.
template <typename... Enumerators>
std::vector<int64> NumbersOf(Enumerators... enumerators)
{
    return {static_cast<int64>(enumerators)...};
}

std::vector<int64> From(int64 first, int64 last)
{
    std::vector<int64> numbers;
    for (int64 number = first; number <= last; ++number)
    {
        numbers.push_back(number);
    }
    return numbers;
}

constexpr std::size_t POINTER = sizeof(void*);

} // namespace

TEST(RecordLayout, OfWhatTheHostGivesToTheModule)
{
    using Record = ControlModuleEnviron;

    EXPECT_EQ((Offsets{offsetof(Record, deployment), offsetof(Record, allocator), offsetof(Record, persistRegistry),
                       offsetof(Record, problems), offsetof(Record, resultHub), offsetof(Record, updateGate),
                       offsetof(Record, scanEngines), offsetof(Record, scanStartStopEvent),
                       offsetof(Record, factoryRestoreEvent), offsetof(Record, persistManager), offsetof(Record, core),
                       offsetof(Record, requestProcessor), offsetof(Record, protocolOption)}),
              (Offsets{0, 1 * POINTER, 2 * POINTER, 3 * POINTER, 4 * POINTER, 5 * POINTER, 6 * POINTER, 7 * POINTER,
                       8 * POINTER, 9 * POINTER, 10 * POINTER, 11 * POINTER, 12 * POINTER}));
    EXPECT_EQ(sizeof(Record), 13 * POINTER);
}

TEST(RecordLayout, OfWhatTheModuleGivesToProtocols)
{
    using Record = ControlProtocolEnviron;

    EXPECT_EQ((Offsets{offsetof(Record, operations), offsetof(Record, resourceAdaptor), offsetof(Record, dataCache),
                       offsetof(Record, hardwareManager), offsetof(Record, deployment), offsetof(Record, problems),
                       offsetof(Record, protocolOption), offsetof(Record, allocator)}),
              (Offsets{0, 1 * POINTER, 2 * POINTER, 3 * POINTER, 4 * POINTER, 5 * POINTER, 6 * POINTER, 7 * POINTER}));
    EXPECT_EQ(sizeof(Record), 8 * POINTER);
}

TEST(RecordLayout, OfWhatAProtocolHandsToItsBase)
{
    using Record = ProtocolInitParams;

    EXPECT_EQ((Offsets{offsetof(Record, params), offsetof(Record, outputs), offsetof(Record, outputsActionTarget),
                       offsetof(Record, metricsData), offsetof(Record, registerAssemblyGroup)}),
              (Offsets{0, 1 * POINTER, 2 * POINTER, 3 * POINTER, 4 * POINTER}));
    EXPECT_EQ(sizeof(Record), 5 * POINTER);
    EXPECT_EQ((Offsets{offsetof(RegisterAssemblyInstance, assembly), offsetof(RegisterAssemblyInstance, actionTarget)}),
              (Offsets{0, POINTER}));
}

TEST(RecordLayout, OfBlockTypes)
{
    using Record = RegisterBlockInfoParams;
    constexpr std::size_t TEXT = sizeof(std::string);

    EXPECT_EQ((Offsets{offsetof(Record, type), offsetof(Record, displayName), offsetof(Record, category),
                       offsetof(Record, deserializedInputSize), offsetof(Record, registerCount),
                       offsetof(Record, bytesPerRegister), offsetof(Record, minInstanceCount),
                       offsetof(Record, maxInstanceCount), offsetof(Record, hasDataSource),
                       offsetof(Record, isProtocolBigEndian), offsetof(Record, factory)}),
              (Offsets{0, TEXT, 2 * TEXT, 2 * TEXT + 2, 2 * TEXT + 4, 2 * TEXT + 6, 2 * TEXT + 8, 2 * TEXT + 10,
                       2 * TEXT + 12, 2 * TEXT + 13, 2 * TEXT + 16}));
    EXPECT_EQ(sizeof(Record), 2 * TEXT + 16 + sizeof(std::shared_ptr<void>));
}

TEST(RecordLayout, OfWhatGoesInAndOutOfBlocks)
{
    using Command = ControlRegisterCommandData;
    using Result = DefaultControlOutputRegisterBlock::DefaultCommandResultData;
    using System = DefaultSystemStateRegisterBlock::DefaultSystemStateData;
    using Scanner = DefaultScannerStateRegisterBlock::DefaultScannerStateData;
    using ScanOutput = ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData;

    EXPECT_EQ((Offsets{offsetof(Command, requestId), offsetof(Command, commandId), offsetof(Command, text)}),
              (Offsets{0, 2, 3}));
    EXPECT_EQ((Offsets{offsetof(Result, requestId), offsetof(Result, status)}), (Offsets{0, 2}));
    EXPECT_EQ((Offsets{offsetof(System, stateByte0), offsetof(System, jobFileNameLength), offsetof(System, stateByte2),
                       offsetof(System, stateByte3), offsetof(System, value64), offsetof(System, jobFileName)}),
              (Offsets{0, 1, 2, 3, 8, 16}));
    EXPECT_EQ((Offsets{offsetof(Scanner, scannerByte0), offsetof(Scanner, scannerByte1),
                       offsetof(Scanner, encoderValue), offsetof(Scanner, syncTime)}),
              (Offsets{0, 1, 8, 16}));
    EXPECT_EQ((Offsets{offsetof(ScanOutput, resultItem), offsetof(ScanOutput, serializeMode)}), (Offsets{0, 8}));
    EXPECT_EQ((Offsets{sizeof(Command), sizeof(Result), sizeof(System), sizeof(Scanner), sizeof(ScanOutput)}),
              (Offsets{68, 4, 80, 24, 16}));
}

TEST(RecordLayout, OfTheStateOfSystemAndScanner)
{
    using System = IControlSystemInterface::SystemStats;
    using Scanner = IControlScanEngineInterface::ScannerStateInfo;
    constexpr std::size_t TEXT = sizeof(std::string);
    constexpr std::size_t LIST = sizeof(std::vector<uint32>);

    EXPECT_EQ((Offsets{offsetof(System, upTime), offsetof(System, appUpTime), offsetof(System, loadedJob),
                       offsetof(System, runState), offsetof(System, linkStatus), offsetof(System, linkCapacity)}),
              (Offsets{0, 8, 16, 16 + TEXT, 24 + TEXT, 24 + TEXT + LIST}));
    EXPECT_EQ(
        (Offsets{offsetof(Scanner, id), offsetof(Scanner, currentEncoderValue), offsetof(Scanner, currentSyncTime),
                 offsetof(Scanner, alignmentState), offsetof(Scanner, laserEnabled)}),
        (Offsets{0, TEXT, TEXT + 8, TEXT + 16, TEXT + 17}));
    EXPECT_EQ((Offsets{offsetof(ControlAnalogOutput::AnalogOutputConstraint, absoluteMin),
                       offsetof(ControlAnalogOutput::AnalogOutputConstraint, absoluteMax)}),
              (Offsets{0, 8}));
}

TEST(Enumerations, KeepTheirWidths)
{
    EXPECT_EQ((Offsets{WIDTH<ZuEthernetProtocol>, WIDTH<ProtocolStatus>, WIDTH<IControlInstance::DataToReset>,
                       WIDTH<IControlManager::PersistenceLoadOpState>,
                       WIDTH<IControlScanEngineInterface::ControlAlignmentState>}),
              (Offsets{4, 4, 1, 1, 1}));
    EXPECT_EQ((Offsets{WIDTH<RegisterBlockCategory>, WIDTH<ControlRegisterCommandStatus>,
                       WIDTH<IControlHardware::ZuHardwareIOType>, WIDTH<ControlDigitalOutput::DigitalOutputControlType>,
                       WIDTH<ControlAnalogOutput::AnalogOutputControlType>,
                       WIDTH<ControlSerialOutput::SerialOutputControlType>,
                       WIDTH<ControlSerialOutput::SerialOutputControlMode>, WIDTH<ZuCore::RunState>}),
              (Offsets{1, 1, 1, 1, 1, 1, 1, 4}));
    EXPECT_TRUE(std::is_signed_v<std::underlying_type_t<ZuEthernetProtocol>>);
}

TEST(Enumerations, KeepTheirNumbers)
{
    using enum IControlInstance::DataToReset;
    using Engine = IControlScanEngineInterface;

    EXPECT_EQ(NumbersOf(UNSTOPPABLE_PROTOCOL, PARAMS_ONLY_PROTOCOL), From(5, 6));
    EXPECT_EQ(NumbersOf(ProtocolStatus::Running, ProtocolStatus::Stopped, ProtocolStatus::Starting,
                        ProtocolStatus::Stopping, ProtocolStatus::FailedToStart, ProtocolStatus::FailedToStop),
              From(0, 5));
    EXPECT_EQ(NumbersOf(DataToResetParams, DataToResetOutputs, DataToResetRegisterAssemblies, DataToResetAll),
              From(0, 3));
    EXPECT_EQ(NumbersOf(IControlManager::PersistenceLoadOpState::Begin, IControlManager::PersistenceLoadOpState::End),
              From(0, 1));
    EXPECT_EQ(NumbersOf(Engine::ALIGNMENT_STATE_0, Engine::ALIGNMENT_STATE_1, Engine::ALIGNMENT_STATE_2), From(0, 2));
    EXPECT_EQ(NumbersOf(ZuCommon::PersistDomain::PROTOCOL, ZuCommon::PersistDomain::JOB), From(1, 2));
}

TEST(Enumerations, OfRegistersAndHardwareKeepTheirNumbers)
{
    using Hardware = IControlHardware::ZuHardwareIOType;

    EXPECT_EQ(NumbersOf(BlockCategoryUnknown, BlockCategoryControlInput, BlockCategoryControlOutput,
                        BlockCategorySystem, BlockCategoryScanner, BlockCategoryStamp, BlockCategoryMeasurement),
              From(0, 6));
    EXPECT_EQ(NumbersOf(CommandStatusNone, CommandStatusInProgress, CommandStatusDone, CommandStatusFailed),
              From(0, 3));
    EXPECT_EQ(NumbersOf(CommandNone, CommandStart, CommandStop, CommandAlign, CommandClearAlign, CommandLoadJob,
                        CommandSoftwareTrigger),
              From(0, 6));
    EXPECT_EQ(
        NumbersOf(Hardware::ANALOG_OUTPUT, Hardware::SERIAL_OUTPUT, Hardware::DIGITAL_OUTPUT, Hardware::DIGITAL_INPUT),
        From(1, 4));
}

TEST(Constants, OfMapsAndAssembliesStand)
{
    EXPECT_EQ(StandardOutputItem::DEFAULT_OUTPUT_ID, 65535);
    EXPECT_STREQ(StandardOutputItem::DEFAULT_SOURCE, "");
    EXPECT_EQ(RegisterOutputItem::DEFAULT_OUTPUT_ID, 65535);
    EXPECT_EQ(StandardProtocolOutputMap::OUTPUT_ID_MIN, 0);
    EXPECT_EQ(StandardProtocolOutputMap::OUTPUT_ID_MAX, 65534);
    EXPECT_EQ(ProtocolRegisterAssemblyBase::LAST_VALID_OUTPUT_ID, 65534);
    EXPECT_STREQ(IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_ID, "registerAssembly-0");
    EXPECT_STREQ(IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME, "Register Assembly 0");
    EXPECT_EQ(std::string(ProtocolRegisterAssemblyBase::REGISTER_BLOCK_INSTANCE_FORMATID_DELIMITER), "-");
}

} // namespace ZuControl
