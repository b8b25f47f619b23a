#pragma once

#include "Plugins/Common/TcpParams.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

namespace AsciiTcp
{

/// The settings of the service.
struct AsciiParams final : public PluginCommon::TcpParams
{
public:
    static constexpr uint16 DEFAULT_PORT = 5025; // the usual port of instruments with a line protocol
    static constexpr uint32 DEFAULT_DECIMALS = 3;

    AsciiParams();
    ~AsciiParams() override;

    void SetDefaults() override;

    Zu::Params::Value<uint32> decimals; ///< digits after the decimal point, 0 to MOST_DECIMALS
};

} // namespace AsciiTcp
