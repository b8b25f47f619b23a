#pragma once

#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"

namespace ModbusTcp
{

/// Carries out the commands that clients write into the registers. Called on the server's I/O thread, so no operation
/// may block.
class ICommandRunner
{
public:
    using Command = ZuControl::ControlProtocol::ControlRegisterCommandData;
    using Status = ZuControl::ControlProtocol::ControlRegisterCommandStatus;

    virtual ~ICommandRunner();

    /// Whether an operation begun by this service still runs.
    virtual bool IsRunning() const = 0;

    /// Whether both commands ask for the same, ignoring their request ids.
    virtual bool IsSame(Command const& first, Command const& second) = 0;

    /// Begins the command's operation and returns. Throws if the operation is refused.
    virtual void Run(Command const& command) = 0;

    /// Sets the status of the last command to failed.
    virtual void Fail() = 0;

    virtual Status LastStatus() = 0;
};

} // namespace ModbusTcp
