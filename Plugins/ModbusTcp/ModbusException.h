#pragma once

#include "wApi/wTypes.h"

namespace ModbusTcp
{

/// Why a request is refused, as the client sees it.
enum class ModbusException : uint8
{
    NONE = 0,
    ILLEGAL_FUNCTION = 1,
    ILLEGAL_DATA_ADDRESS = 2, ///< outside the registers, or a write outside the command block
    ILLEGAL_DATA_VALUE = 3,   ///< a quantity out of bounds, or a request whose parts contradict each other
    SERVER_DEVICE_BUSY = 6    ///< an operation that this service has started still runs
};

} // namespace ModbusTcp
