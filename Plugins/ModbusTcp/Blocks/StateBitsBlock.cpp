#include "Plugins/ModbusTcp/Blocks/StateBitsBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include <cstring>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

namespace
{

// The states as the blocks System and Scanner show them.
constexpr uint8 RUN_STATE_READY = 0;
constexpr uint8 RUN_STATE_RUNNING = 1;
constexpr uint8 RUN_STATE_ERROR = 2;
constexpr uint8 BEING_ALIGNED = 1;
constexpr uint8 IS_ALIGNED = 2;

struct BitName
{
    StateBitsBlock::Bit bit;
    char const* name;
    char const* comment;
};

constexpr BitName BIT_NAMES[] = {
    {StateBitsBlock::READY, "ready", "no scan runs"},
    {StateBitsBlock::RUNNING, "running", "a scan runs"},
    {StateBitsBlock::ERROR, "error", "the sensor has an error"},
    {StateBitsBlock::ALIGNED, "aligned", "the scanner is aligned"},
    {StateBitsBlock::ALIGNING, "aligning", "the scanner is being aligned"},
    {StateBitsBlock::LASER_ON, "laserOn", "the laser is enabled"},
    {StateBitsBlock::LINKED, "linked", "the first network interface is linked"},
    {StateBitsBlock::PROBLEMS, "problems", "problems are on record"},
    {StateBitsBlock::COMMAND_RUNS, "commandRuns", "a command runs"},
    {StateBitsBlock::COMMAND_DONE, "commandDone", "the last command is done"},
    {StateBitsBlock::COMMAND_FAILED, "commandFailed", "the last command has failed"},
    {StateBitsBlock::RESULT_WAITS, "resultWaits", "a result queue holds a result"},
    {StateBitsBlock::RESULTS_LOST, "resultsLost", "a result queue has lost results since it was empty"},
};

constexpr uint16 BitIf(bool isSet, StateBitsBlock::Bit bit)
{
    return static_cast<uint16>(isSet ? 1u << bit : 0u);
}

} // namespace

StateBitsBlock::StateBitsBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolRegisterBlock(params, usedInfo)
{
}

StateBitsBlock::~StateBitsBlock() = default;

void StateBitsBlock::Serialize(void* destination, std::size_t destinationSize, void const* source,
                               std::size_t sourceSize)
{
    if (source == nullptr || sourceSize != sizeof(States) || destination == nullptr ||
        destinationSize != info.SerializedOutputSize())
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE, "Insufficient buffer size available for data serialization.");
    }
    States states;
    std::memcpy(&states, source, sizeof states);
    ValueEncoder().Write(static_cast<uint8*>(destination), BitsOf(states));
}

std::vector<RegisterField> StateBitsBlock::Fields() const
{
    std::vector<RegisterField> fields;
    for (BitName const& named : BIT_NAMES)
    {
        RegisterField& field = fields.emplace_back();
        field.name = named.name;
        field.type = FieldType::BIT;
        field.bit = named.bit;
        field.comment = named.comment;
    }
    return fields;
}

uint16 StateBitsBlock::BitsOf(States const& states)
{
    auto const& system = states.sensor.system;
    auto const& scanner = states.sensor.scanner;
    return static_cast<uint16>(
        BitIf(system.stateByte0 == RUN_STATE_READY, READY) | BitIf(system.stateByte0 == RUN_STATE_RUNNING, RUNNING) |
        BitIf(system.stateByte0 == RUN_STATE_ERROR, ERROR) | BitIf(scanner.scannerByte0 == IS_ALIGNED, ALIGNED) |
        BitIf(scanner.scannerByte0 == BEING_ALIGNED, ALIGNING) | BitIf(scanner.scannerByte1 != 0, LASER_ON) |
        BitIf(system.stateByte2 != 0, LINKED) | BitIf(system.stateByte3 != 0, PROBLEMS) |
        BitIf(states.command == CommandStatusInProgress, COMMAND_RUNS) |
        BitIf(states.command == CommandStatusDone, COMMAND_DONE) |
        BitIf(states.command == CommandStatusFailed, COMMAND_FAILED) | BitIf(states.hasResults, RESULT_WAITS) |
        BitIf(states.hasLostResults, RESULTS_LOST));
}

} // namespace ModbusTcp
