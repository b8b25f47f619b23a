#pragma once

#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

/// The state of the last command as a client reads it from the registers.
enum ControlRegisterCommandStatus : uint8
{
    CommandStatusNone = 0,       ///< no command has run yet
    CommandStatusInProgress = 1, ///< an operation is in progress
    CommandStatusDone = 2,       ///< the last command succeeded
    CommandStatusFailed = 3      ///< the last command failed
};

} // namespace ZuControl::ControlProtocol
