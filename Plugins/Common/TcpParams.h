#pragma once

#include "Plugins/Common/TcpServer.h"
#include "Plugins/Common/TextLimits.h"
#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

#include <string>

namespace PluginCommon
{

/// The parameters of every TCP service. A service derives its own record from this one.
///
/// The constructor of the derived class registers its own parameters and then calls `RegisterLimits`: documents show
/// the parameters in the order of registration.
struct TcpParams : public Zu::Params::Group
{
public:
    static constexpr char const* DEFAULT_ADDRESS = "127.0.0.1";
    static constexpr uint32 LONGEST_ADDRESS = 64; ///< bytes; an IPv6 address with a scope fits
    static constexpr uint32 LONGEST_LIST = 2048;  ///< bytes
    static constexpr uint32 LONGEST_PATH = 1024;
    static constexpr uint32 DEFAULT_MAX_CLIENTS = 16;
    static constexpr uint32 MOST_CLIENTS = 512;
    static constexpr uint32 DEFAULT_IDLE_TIMEOUT = 60;
    static constexpr uint32 LONGEST_IDLE_TIMEOUT = 86400;
    static constexpr uint32 DEFAULT_MAKE_ROOM_AFTER = 10;

    ~TcpParams() override;

    /// Sets all parameters to their defaults. A derived record with own parameters overrides it and calls this one.
    virtual void SetDefaults();

    /// The settings of the server. Values out of bounds are clamped, because parameters from a job are not validated.
    TcpSettings Settings() const;

    Zu::Params::Value<uint16> port;        ///< 0: a free port, shown in the metrics
    LimitedText address{LONGEST_ADDRESS};  ///< a numeric IP address of this machine
    Zu::Params::Value<uint32> maxClients;  ///< 1 to MOST_CLIENTS
    Zu::Params::Value<uint32> idleTimeout; ///< seconds, 1 to LONGEST_IDLE_TIMEOUT

    /// Seconds without a complete request after which a client makes room for a new one, 1 to LONGEST_IDLE_TIMEOUT.
    Zu::Params::Value<uint32> makeRoomAfter;

    // Networks in CIDR notation with commas between, such as "192.168.0.0/24, 10.0.0.7".
    LimitedText allowedClients{LONGEST_LIST}; ///< of the clients that may connect; empty: all
    LimitedText writers{LONGEST_LIST};        ///< of the clients that may write and run commands; empty: all
    Zu::Params::Value<bool> readOnly;         ///< no client may write or run commands

    Zu::Params::Enum<TcpSecurity> security;
    LimitedText certificateFile{LONGEST_PATH}; ///< these three: paths of PEM files on this machine
    LimitedText keyFile{LONGEST_PATH};
    LimitedText authorityFile{LONGEST_PATH}; ///< authorities that sign the certificates of clients

    LimitedText revocationFile{LONGEST_PATH}; ///< the file with the lists of revoked certificates of clients

    /// Roles of further texts in the certificates of clients: "Maintenance=engineer, SCADA=viewer".
    LimitedText roles{LONGEST_LIST};

protected:
    /// Registers port, address and maxClients.
    explicit TcpParams(uint16 newDefaultPort);

    /// Registers the times, the permitted clients and TLS, behind the parameters of the derived record.
    void RegisterLimits();

    /// Sets both bounds of a number.
    static void Bound(Zu::Params::Value<uint32>& value, uint32 least, uint32 most);

private:
    void RegisterTime(char const* key, char const* title, Zu::Params::Value<uint32>& value);

    uint16 const defaultPort;
};

} // namespace PluginCommon

ZU_DECLARE_ENUM_VALUE(PluginCommon::TcpSecurity);
