#pragma once

#include "Plugins/Common/ClientCounters.h"
#include "Plugins/ModbusTcp/ModbusException.h"

#include <array>
#include <cstddef>

namespace ModbusTcp
{

using PluginCommon::Count;

/// What the server has done since it was built.
struct ServerCounters final : PluginCommon::ClientCounters
{
    static constexpr std::size_t CODE_COUNT = static_cast<std::size_t>(ModbusException::SERVER_DEVICE_BUSY) + 1;

    std::atomic<uint64> exceptions{0};                              ///< requests that were refused
    std::array<std::atomic<uint64>, CODE_COUNT> exceptionsByCode{}; ///< the same, by the code that the client got
    std::atomic<uint64> lastHandlingUsec{0};
    std::atomic<uint64> largestHandlingUsec{0}; ///< written by the I/O thread; somebody else may begin it anew

    /// One more request that was refused. Nothing for one that was not.
    void CountException(ModbusException refusal);

    /// How long the last request took.
    void NoteHandling(uint64 usec);
};

} // namespace ModbusTcp
