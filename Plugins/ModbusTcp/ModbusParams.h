#pragma once

#include "Plugins/Common/TcpParams.h"
#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

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
struct ModbusParams final : public PluginCommon::TcpParams
{
public:
    static constexpr uint16 DEFAULT_PORT = 1502; // the registered port 502 needs privileges

    ModbusParams();
    ~ModbusParams() override;

    void SetDefaults() override;

    Zu::Params::Enum<RegisterOrder> registerOrder;
    Zu::Params::Value<uint32> queueDepth; ///< results that a result queue holds
};

} // namespace ModbusTcp

ZU_DECLARE_ENUM_VALUE(ModbusTcp::RegisterOrder);
