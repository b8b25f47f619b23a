#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

#include <string>

namespace AsciiTcp
{

/// What a user sets.
struct AsciiParams final : public Zu::Params::Group
{
public:
    static constexpr uint16 DEFAULT_PORT = 5025; // where instruments that speak in lines usually answer
    static constexpr char const* DEFAULT_ADDRESS = "127.0.0.1";
    static constexpr uint32 DEFAULT_MAX_CLIENTS = 16;
    static constexpr uint32 MOST_CLIENTS = 512;
    static constexpr uint32 DEFAULT_DECIMALS = 3;
    static constexpr uint32 DEFAULT_IDLE_TIMEOUT = 60;
    static constexpr uint32 LONGEST_IDLE_TIMEOUT = 86400;

    AsciiParams();
    ~AsciiParams() override;

    void SetDefaults();

    Zu::Params::Value<uint16> port;         ///< 0 takes a free one; the metrics tell which
    Zu::Params::Value<std::string> address; ///< IP address of this machine, as a number
    Zu::Params::Value<uint32> maxClients;   ///< 1 to MOST_CLIENTS
    Zu::Params::Value<uint32> decimals;     ///< digits behind the point of a value, 0 to MOST_DECIMALS
    Zu::Params::Value<uint32> idleTimeout;  ///< seconds, 1 to LONGEST_IDLE_TIMEOUT
};

} // namespace AsciiTcp
