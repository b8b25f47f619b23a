#pragma once

#include "Plugins/Common/ICommandRunner.h"
#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "wApi/wTypes.h"

#include <array>
#include <span>

namespace ZuControl::ControlProtocol
{
struct ProtocolRegisterBlock;
}

namespace ModbusTcp
{

/// The command registers, and the rule that decides when a write is a command.
///
/// Each write request is evaluated once, after all its registers are written. It is a command if the request id has
/// changed, or if the rest of the command differs from the last command taken. A command that is refused or fails is
/// reported as failed under its request id. The registers survive connections and restarts of the service: a client
/// that reconnects after a job was loaded still finds the result.
///
/// Threads: one thread at a time.
class CommandChannel final
{
public:
    static constexpr std::size_t REGISTER_COUNT = 66;
    using Registers = std::array<uint16, REGISTER_COUNT>;
    using Result = ZuControl::ControlProtocol::DefaultControlOutputRegisterBlock::DefaultCommandResultData;

    explicit CommandChannel(PluginCommon::ICommandRunner& commandRunner);
    ~CommandChannel();
    CommandChannel(CommandChannel const&) = delete;
    CommandChannel& operator=(CommandChannel const&) = delete;

    /// Writes `values` from register `offset` of the block on; the range lies within the block. `block` decodes the
    /// registers; `isBigEndian` is the byte order of the service. Returns SERVER_DEVICE_BUSY and writes nothing while
    /// an operation of this service runs.
    ModbusException Write(ZuControl::ControlProtocol::ProtocolRegisterBlock& block, bool isBigEndian,
                          std::size_t offset, std::span<uint16 const> values);

    /// Runs a command under the request id 0, also if it equals the last command. A job is loaded by the name in the
    /// registers. The registers then hold request id 0 and command 0. Returns SERVER_DEVICE_BUSY and changes nothing
    /// while an operation of this service runs.
    ModbusException Run(ZuControl::ControlProtocol::ProtocolRegisterBlock& block, bool isBigEndian, uint8 commandId);

    /// The id of the command that runs, or 0. Command 0 does not run: it has no operation.
    uint8 RunningCommand();

    /// The registers as written, for reading them back.
    Registers const& Written() const
    {
        return registers;
    }

    /// The request id and the status of the last command taken.
    Result LastResult();

    uint64 TakenCount() const
    {
        return takenCount;
    }

private:
    using Command = PluginCommon::ICommandRunner::Command;

    bool Decode(ZuControl::ControlProtocol::ProtocolRegisterBlock& block, bool isBigEndian, Command& command) const;
    void Take(Command const& command, bool isDecoded);

    PluginCommon::ICommandRunner& runner;
    Registers registers{};
    Command last{};   // with which a write is compared
    uint8 lastId = 0; // of the last command taken
    uint64 takenCount = 0;
};

} // namespace ModbusTcp
