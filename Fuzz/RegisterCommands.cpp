// Input: writes of a client into the command registers, in any order and at any moment.
//
// Checks: an accepted command has a terminated text, the answer carries its request id, and a refused write changes
// nothing.

#include "Fuzz/Support/Check.h"
#include "Fuzz/Support/FormattedLog.h"
#include "Fuzz/Support/Input.h"
#include "Plugins/ModbusTcp/CommandChannel.h"
#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <cstring>
#include <optional>
#include <string>

namespace
{

using namespace ModbusTcp;
using namespace ZuControl::ControlProtocol;

/// Executes no command; is busy and refuses as set by the fuzzer.
class Runner final : public PluginCommon::ICommandRunner
{
public:
    bool IsSameCommand(Command const& first, Command const& second) override
    {
        return first.commandId == second.commandId && std::strcmp(first.text, second.text) == 0;
    }

    void RunCommand(Command const& command) override
    {
        ZU_FUZZ_CHECK(std::memchr(command.text, '\0', sizeof command.text) != nullptr);
        ZU_FUZZ_CHECK((command.commandId == CommandLoadJob) == (command.text[0] != '\0'));
        lastRun = command;
        if (refuses)
        {
            ZU_THROW(Zu::Status::BUSY, "%s", command.text);
        }
        status = CommandStatusDone;
    }

    void FailCommand() override
    {
        status = CommandStatusFailed;
    }

    Status CommandStatus() override
    {
        return isRunning ? CommandStatusInProgress : status;
    }

    std::optional<Command> lastRun;
    Status status = CommandStatusNone;
    bool isRunning = false;
    bool refuses = false;
};

/// The command block of a service with the given register order.
class Service final
{
public:
    Service()
    {
        AddModbusBlockTypes(assembly);
        AddBlockParams params;
        auto& added = params.blocks.Add();
        added.type.Set(TYPE_CONTROL_INPUT);
        added.outputId.Set(0);
        assembly.Add(params);
        block = assembly.FindAddedBlocksOfTypes({TYPE_CONTROL_INPUT}).front();
    }

    void Write(std::size_t offset, std::span<uint16 const> values)
    {
        auto const before = channel.Written();
        uint64 const takenBefore = channel.TakenCount();
        runner.lastRun.reset();

        ModbusException const refusal = channel.Write(*block, isBigEndian, offset, values);

        if (refusal != ModbusException::NONE)
        {
            ZU_FUZZ_CHECK(channel.Written() == before);
            ZU_FUZZ_CHECK(channel.TakenCount() == takenBefore);
            return;
        }
        ZU_FUZZ_CHECK(!runner.isRunning && offset + values.size() <= CommandChannel::REGISTER_COUNT);
        if (runner.lastRun.has_value())
        {
            ZU_FUZZ_CHECK(channel.TakenCount() == takenBefore + 1);
            ZU_FUZZ_CHECK(channel.LastResult().requestId == runner.lastRun->requestId);
            ZU_FUZZ_CHECK(channel.LastResult().requestId == channel.Written()[0]);
        }
    }

    ProtocolRegisterAssemblyBase assembly{true, 0, LAST_REGISTER};
    std::shared_ptr<ProtocolRegisterBlock> block;
    Runner runner;
    CommandChannel channel{runner};
    bool isBigEndian = true; // as the assembly was made
};

void WriteOne(Service& service, ZuFuzz::Input& input)
{
    std::size_t const offset = input.TakeByte();
    std::vector<uint16> values(input.TakeByte() % 128);
    for (uint16& value : values)
    {
        value = input.TakeWord();
    }
    service.Write(offset, values);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    static ZuFuzz::FormattedLog const log;
    ZuFuzz::Input input(data, size);
    Service service;
    while (!input.IsEmpty())
    {
        uint8 const state = input.TakeByte();
        service.runner.isRunning = (state & 1) != 0;
        service.runner.refuses = (state & 2) != 0;
        WriteOne(service, input);
    }
    return 0;
}
