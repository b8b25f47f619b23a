#pragma once

#include "Plugins/Common/ClientCounters.h"
#include "Plugins/ModbusTcp/ModbusException.h"

#include <array>
#include <cstddef>

namespace ModbusTcp
{

using PluginCommon::Count;

/// Counters of the server since its construction.
struct ServerCounters final : PluginCommon::ClientCounters
{
    static constexpr std::size_t CODE_COUNT = static_cast<std::size_t>(ModbusException::SERVER_DEVICE_BUSY) + 1;

    std::atomic<uint64> exceptions{0};                              ///< refused requests
    std::array<std::atomic<uint64>, CODE_COUNT> exceptionsByCode{}; ///< refused requests by exception code
    std::atomic<uint64> lastHandlingUsec{0};
    std::atomic<uint64> largestHandlingUsec{0}; ///< written on the I/O thread; another thread may reset it

    /// Counts a refused request; does nothing for NONE.
    void CountException(ModbusException refusal);

    /// Records the duration of a request.
    void NoteHandling(uint64 usec);
};

} // namespace ModbusTcp
