#pragma once

#include "wApi/wTypes.h"

#include <cstddef>

namespace ZuControl::ControlProtocol
{

/// The commands common to all protocols. A client may send other numbers, so a received number is kept as a plain byte.
enum ControlRegisterCommandId : uint8
{
    CommandNone = 0,
    CommandStart = 1,
    CommandStop = 2,
    CommandAlign = 3,          ///< text: scanner id
    CommandClearAlign = 4,     ///< text: scanner id
    CommandLoadJob = 5,        ///< text: job name
    CommandSoftwareTrigger = 6 ///< text: scanner id
};

/// One received command, passed by value.
struct ControlRegisterCommandData
{
    static constexpr std::size_t TEXT_SIZE = 64;

    uint16 requestId;     ///< the client's number for this request; echoed in the result
    uint8 commandId;      ///< a ControlRegisterCommandId, or another number that the client has sent
    char text[TEXT_SIZE]; ///< scanner id or job name: at most 63 characters and a NUL
};

static_assert(sizeof(ControlRegisterCommandData) == 68, "blocks test the size of the record they are given");

/// The state of the last command as a client reads it from the registers.
enum ControlRegisterCommandStatus : uint8
{
    CommandStatusNone = 0,       ///< no command has run yet
    CommandStatusInProgress = 1, ///< an operation is in progress
    CommandStatusDone = 2,       ///< the last command succeeded
    CommandStatusFailed = 3      ///< the last command failed
};

} // namespace ZuControl::ControlProtocol
