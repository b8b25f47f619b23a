#pragma once

#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"

namespace PluginCommon
{

/// The commands of the module as a service carries them out for its clients. Called on the I/O thread, so no operation
/// blocks.
class ICommandRunner
{
public:
    using Command = ZuControl::ControlProtocol::ControlRegisterCommandData;
    using Status = ZuControl::ControlProtocol::ControlRegisterCommandStatus;

    virtual ~ICommandRunner();

    /// Begins the command's operation and returns. If the operation is refused, it throws, and the status of the
    /// previous operation stays.
    virtual void RunCommand(Command const& command) = 0;

    /// Sets the status of the last command to failed.
    virtual void FailCommand() = 0;

    /// `CommandStatusInProgress` while an operation begun by this service runs, otherwise the result of the last one.
    virtual Status CommandStatus() = 0;

    /// Whether both commands ask for the same, ignoring their request ids.
    virtual bool IsSameCommand(Command const& first, Command const& second) = 0;
};

} // namespace PluginCommon
