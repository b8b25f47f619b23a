#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "wApi/wTypes.h"

#include <string>

namespace ModbusTcp
{

/// What the service tells of itself. The numbers count from the last reset, but for those that say "now".
struct ModbusMetrics final : public Zu::Properties::Structure
{
public:
    ModbusMetrics();
    ~ModbusMetrics() override;
    ModbusMetrics(ModbusMetrics const&) = delete;
    ModbusMetrics& operator=(ModbusMetrics const&) = delete;

    using Number = Zu::Properties::Value<uint64>;

    Number controlDrops;                          ///< result sets of which a block could not be encoded
    Zu::Properties::Value<std::string> listening; ///< "127.0.0.1:1502" now, empty while stopped
    Number clients;                               ///< connected now
    Number acceptedClients;
    Number rejectedClients; ///< beyond the cap
    Number droppedClients;  ///< for silence, a malformed frame or not taking answers
    Number requests;
    Number exceptions; ///< requests that were refused
    Number bytesIn;
    Number bytesOut;
    Number resultSets;
    Number commands; ///< taken from the command block
};

} // namespace ModbusTcp
