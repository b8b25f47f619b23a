#pragma once

#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

#include <string>

namespace ModbusTcp
{

/// The register that comes first in a value of several registers: the most significant (clients call it ABCD) or the
/// least significant (CDAB).
enum RegisterOrder : int32
{
    RegisterOrderBigEndian = 0,
    RegisterOrderLittleEndian = 1
};

/// The settings of the service.
struct ModbusParams final : public Zu::Params::Group
{
public:
    static constexpr uint16 DEFAULT_PORT = 1502; // the registered port 502 needs privileges
    static constexpr char const* DEFAULT_ADDRESS = "127.0.0.1";
    static constexpr uint32 DEFAULT_MAX_CLIENTS = 16;
    static constexpr uint32 MOST_CLIENTS = 512;
    static constexpr uint32 DEFAULT_IDLE_TIMEOUT = 60;
    static constexpr uint32 LONGEST_IDLE_TIMEOUT = 86400;

    ModbusParams();
    ~ModbusParams() override;

    void SetDefaults();

    Zu::Params::Value<uint16> port;         ///< 0: a free port, shown in the metrics
    Zu::Params::Value<std::string> address; ///< a numeric IP address of this machine
    Zu::Params::Value<uint32> maxClients;   ///< 1 to MOST_CLIENTS
    Zu::Params::Enum<RegisterOrder> registerOrder;
    Zu::Params::Value<uint32> idleTimeout; ///< seconds, 1 to LONGEST_IDLE_TIMEOUT
};

} // namespace ModbusTcp

ZU_DECLARE_ENUM_VALUE(ModbusTcp::RegisterOrder);
