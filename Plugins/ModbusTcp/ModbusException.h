#pragma once

#include "wApi/wTypes.h"

namespace ModbusTcp
{

/// The exception code by which a request is refused.
enum class ModbusException : uint8
{
    NONE = 0,
    ILLEGAL_FUNCTION = 1,
    ILLEGAL_DATA_ADDRESS = 2, ///< outside the registers, or a write outside the command block
    ILLEGAL_DATA_VALUE = 3,   ///< a quantity out of range, or parts of the request that contradict each other
    SERVER_DEVICE_BUSY = 6    ///< an operation begun by this service still runs
};

} // namespace ModbusTcp
