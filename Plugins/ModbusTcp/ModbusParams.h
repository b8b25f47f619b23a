#pragma once

#include "Plugins/Common/TcpParams.h"
#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

namespace ModbusTcp
{

/// The order of the bytes of a number, by the names that clients use: ABCD, CDAB, BADC and DCBA.
enum RegisterOrder : int32
{
    RegisterOrderBigEndian = 0,
    RegisterOrderLittleEndian = 1, ///< of registers; in each the high byte comes first
    RegisterOrderBigEndianSwapped = 2,
    RegisterOrderLittleEndianSwapped = 3
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
