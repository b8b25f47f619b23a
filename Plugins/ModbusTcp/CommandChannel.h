#pragma once

#include "Plugins/ModbusTcp/ICommandRunner.h"
#include "Plugins/ModbusTcp/ModbusException.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlock.h"
#include "wApi/wTypes.h"

#include <array>
#include <span>

namespace ZuControl::ControlProtocol
{
struct ProtocolRegisterBlock;
}

namespace ModbusTcp
{

/// The registers that a client writes commands into, and the rule when they are one.
///
/// A write is judged once, with all its registers in. It is a command when the request id has changed, or when it has not
/// and the command differs from the last one taken. What is refused or fails ends as failed under its request id. The
/// registers outlive connections and restarts: a client that comes back after a job was loaded finds its answer.
/// Threads: one at a time.
class CommandChannel final
{
public:
    static constexpr std::size_t REGISTER_COUNT = 66;
    using Registers = std::array<uint16, REGISTER_COUNT>;
    using Result = ZuControl::ControlProtocol::DefaultControlOutputRegisterBlock::DefaultCommandResultData;

    explicit CommandChannel(ICommandRunner& commandRunner);
    ~CommandChannel();
    CommandChannel(CommandChannel const&) = delete;
    CommandChannel& operator=(CommandChannel const&) = delete;

    /// Writes `values` from register `offset` of the block on; the range lies within it. `block` decodes them, which takes
    /// their bytes in the byte order of the service. 6 while an operation of ours runs, and then nothing is written.
    ModbusException Write(ZuControl::ControlProtocol::ProtocolRegisterBlock& block, bool isBigEndian,
                          std::size_t offset, std::span<uint16 const> values);

    /// What was written, to be read back.
    Registers const& Written() const
    {
        return registers;
    }

    /// The request id of the last command that was taken, and what became of it.
    Result LastResult();

    uint64 TakenCount() const
    {
        return takenCount;
    }

private:
    using Command = ICommandRunner::Command;

    bool Decode(ZuControl::ControlProtocol::ProtocolRegisterBlock& block, bool isBigEndian, Command& command) const;
    void Take(Command const& command, bool isDecoded);

    ICommandRunner& runner;
    Registers registers{};
    Command last{};
    uint64 takenCount = 0;
};

} // namespace ModbusTcp
