#pragma once

#include "Plugins/Common/ICommandRunner.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace ModbusTcp
{

/// Records the commands. Refuses and stays busy on demand.
class FakeCommandRunner final : public PluginCommon::ICommandRunner
{
public:
    bool IsSameCommand(Command const& first, Command const& second) override
    {
        return first.commandId == second.commandId && std::strcmp(first.text, second.text) == 0;
    }

    void RunCommand(Command const& command) override
    {
        commands.push_back(std::to_string(command.requestId) + ":" + std::to_string(command.commandId) + ":" +
                           command.text);
        if (refuses)
        {
            throw std::runtime_error("refused");
        }
        status = ZuControl::ControlProtocol::CommandStatusDone;
    }

    void FailCommand() override
    {
        status = ZuControl::ControlProtocol::CommandStatusFailed;
    }

    Status CommandStatus() override
    {
        return status;
    }

    std::vector<std::string> commands;
    Status status = ZuControl::ControlProtocol::CommandStatusNone;
    bool refuses = false;
};

} // namespace ModbusTcp
