#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

#include <string>

namespace AsciiTcp
{

/// The settings of the service.
struct AsciiParams final : public Zu::Params::Group
{
public:
    static constexpr uint16 DEFAULT_PORT = 5025; // the usual port of instruments with a line protocol
    static constexpr char const* DEFAULT_ADDRESS = "127.0.0.1";
    static constexpr uint32 DEFAULT_MAX_CLIENTS = 16;
    static constexpr uint32 MOST_CLIENTS = 512;
    static constexpr uint32 DEFAULT_DECIMALS = 3;
    static constexpr uint32 DEFAULT_IDLE_TIMEOUT = 60;
    static constexpr uint32 LONGEST_IDLE_TIMEOUT = 86400;

    AsciiParams();
    ~AsciiParams() override;

    void SetDefaults();

    Zu::Params::Value<uint16> port;         ///< 0: a free port, shown in the metrics
    Zu::Params::Value<std::string> address; ///< a numeric IP address of this machine
    Zu::Params::Value<uint32> maxClients;   ///< 1 to MOST_CLIENTS
    Zu::Params::Value<uint32> decimals;     ///< digits after the decimal point, 0 to MOST_DECIMALS
    Zu::Params::Value<uint32> idleTimeout;  ///< seconds, 1 to LONGEST_IDLE_TIMEOUT
};

} // namespace AsciiTcp
