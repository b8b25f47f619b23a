#pragma once

#include "Plugins/Common/TcpMetrics.h"
#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "ZuApi/Properties/Value.h"

#include <array>
#include <cstddef>
#include <string>

namespace ModbusTcp
{

using PluginCommon::Count;

/// The counters of the service since its construction. The I/O thread counts, except for results.
struct ModbusCounters final : PluginCommon::TcpCounters
{
    static constexpr std::size_t CODE_COUNT = static_cast<std::size_t>(ModbusException::SERVER_DEVICE_BUSY) + 1;

    Counter exceptions{0};                              ///< refused requests
    std::array<Counter, CODE_COUNT> exceptionsByCode{}; ///< refused requests by exception code
    Counter commands{0};                                ///< commands taken from the command block
    Counter registersWritten{0};                        ///< by accepted requests
    Counter queuedResults{0};                           ///< in result queues now
    Counter overflowingQueues{0};                       ///< queues that have lost results since they were empty
    Counter queueOverflows{0};                          ///< results that a result queue has lost

    /// Counts a refused request; does nothing for NONE.
    void CountException(ModbusException refusal);
};

/// The refused requests by exception code.
///
/// The schema names the keys of the members under "label", so that a scraper shows one series with a label instead of
/// several series.
class ExceptionMetrics final : public PluginCommon::CounterMetrics
{
public:
    explicit ExceptionMetrics(ModbusCounters const& counters);
    ~ExceptionMetrics() override;

private:
    Zu::Properties::Value<std::string> label{"code"};
};

/// The metrics that are saved and count since the first start of the system.
class LifetimeMetrics final : public PluginCommon::CounterMetrics
{
public:
    explicit LifetimeMetrics(ModbusCounters const& counters);
    ~LifetimeMetrics() override;
};

/// The metrics of the service. Numbers count from the last reset, except those under "lifetime" and those with "now" in
/// their title. Any thread may read them during an update.
class ModbusMetrics final : public PluginCommon::TcpMetrics
{
public:
    explicit ModbusMetrics(ModbusCounters const& counters);
    ~ModbusMetrics() override;

    void Show() override;
    void Reset() override; ///< changes nothing under "lifetime"

    ExceptionMetrics exceptions;
    LifetimeMetrics lifetime;
};

} // namespace ModbusTcp
