#include "Plugins/ModbusTcp/CommandChannel.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <algorithm>

namespace ModbusTcp
{

namespace
{

// The registers of the block.
constexpr std::size_t REQUEST_ID = 0;
constexpr std::size_t COMMAND_ID = 1;

} // namespace

CommandChannel::CommandChannel(PluginCommon::ICommandRunner& commandRunner) : runner(commandRunner)
{
}

CommandChannel::~CommandChannel() = default;

ModbusException CommandChannel::Write(ZuControl::ControlProtocol::ProtocolRegisterBlock& block, bool isBigEndian,
                                      std::size_t offset, std::span<uint16 const> values)
{
    if (offset + values.size() > registers.size())
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    if (runner.CommandStatus() == ZuControl::ControlProtocol::CommandStatusInProgress)
    {
        return ModbusException::SERVER_DEVICE_BUSY;
    }
    std::ranges::copy(values, registers.begin() + static_cast<std::ptrdiff_t>(offset));
    Command command{};
    bool const isDecoded = Decode(block, isBigEndian, command);
    if (command.requestId != last.requestId || !runner.IsSameCommand(command, last))
    {
        Take(command, isDecoded);
    }
    return ModbusException::NONE;
}

ModbusException CommandChannel::Run(ZuControl::ControlProtocol::ProtocolRegisterBlock& block, bool isBigEndian,
                                    uint8 commandId)
{
    if (runner.CommandStatus() == ZuControl::ControlProtocol::CommandStatusInProgress)
    {
        return ModbusException::SERVER_DEVICE_BUSY;
    }
    registers[REQUEST_ID] = 0;
    registers[COMMAND_ID] = commandId;
    Command command{};
    bool const isDecoded = Decode(block, isBigEndian, command);
    Take(command, isDecoded);
    registers[COMMAND_ID] = 0; // a later write of the text alone then finds the command that does nothing
    last = {};
    return ModbusException::NONE;
}

uint8 CommandChannel::RunningCommand()
{
    bool const runs = runner.CommandStatus() == ZuControl::ControlProtocol::CommandStatusInProgress;
    return runs ? lastId : uint8{0};
}

CommandChannel::Result CommandChannel::LastResult()
{
    return {last.requestId, runner.CommandStatus()};
}

bool CommandChannel::Decode(ZuControl::ControlProtocol::ProtocolRegisterBlock& block, bool isBigEndian,
                            Command& command) const
{
    std::array<uint8, 2 * REGISTER_COUNT> bytes;
    for (std::size_t i = 0; i < registers.size(); ++i)
    {
        bytes[2 * i] = static_cast<uint8>(isBigEndian ? registers[i] >> 8 : registers[i] & 0xFF);
        bytes[2 * i + 1] = static_cast<uint8>(isBigEndian ? registers[i] & 0xFF : registers[i] >> 8);
    }
    try
    {
        block.Deserialize(&command, sizeof command, bytes.data(), bytes.size());
        return true;
    }
    catch (Zu::Exception const&)
    {
        return false; // a job without a name; the ids are decoded all the same, so the command is answered
    }
}

void CommandChannel::Take(Command const& command, bool isDecoded)
{
    last = command;
    lastId = command.commandId;
    ++takenCount;
    if (!isDecoded)
    {
        runner.FailCommand();
        return;
    }
    try
    {
        runner.RunCommand(command);
    }
    catch (...)
    {
        ZU_LOG_CAUGHT("Command %u of request %u was refused", unsigned{command.commandId}, unsigned{command.requestId});
        runner.FailCommand();
    }
}

} // namespace ModbusTcp
