#pragma once

#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandStatus.h"

namespace ModbusTcp
{

/// Who carries out the commands that come through the registers.
class ICommandRunner
{
public:
    using Command = ZuControl::ControlProtocol::ControlRegisterCommandData;
    using Status = ZuControl::ControlProtocol::ControlRegisterCommandStatus;

    virtual ~ICommandRunner();

    /// Whether an operation that a command of ours began still runs.
    virtual bool IsRunning() const = 0;

    /// Whether the two ask for the same, whatever their request ids.
    virtual bool IsSame(Command const& first, Command const& second) = 0;

    /// Begins the command's operation and returns. Throws when it is refused.
    virtual void Run(Command const& command) = 0;

    /// The last command has ended without success, or never began.
    virtual void Fail() = 0;

    virtual Status LastStatus() = 0;
};

} // namespace ModbusTcp
