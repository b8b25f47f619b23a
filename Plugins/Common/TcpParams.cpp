#include "Plugins/Common/TcpParams.h"

#include <algorithm>

ZU_INSTANTIATE_ENUM_VALUE(PluginCommon::TcpSecurity);

namespace PluginCommon
{

namespace
{

uint64 UsecOf(uint32 seconds)
{
    constexpr uint64 USEC_PER_SECOND = 1'000'000;
    return USEC_PER_SECOND * std::clamp<uint32>(seconds, 1, TcpParams::LONGEST_IDLE_TIMEOUT);
}

} // namespace

TcpParams::TcpParams(uint16 newDefaultPort) : Group(""), defaultPort(newDefaultPort)
{
    Register("port", "TCP Port", port);
    Register("address", "IP Address", address);
    Register("maxClients", "Maximum Number of Clients", maxClients);
    Bound(maxClients, 1, MOST_CLIENTS);
    TcpParams::SetDefaults();
}

TcpParams::~TcpParams()
{
    for (char const* key :
         {"port", "address", "maxClients", "idleTimeout", "makeRoomAfter", "allowedClients", "writers", "readOnly",
          "security", "certificateFile", "keyFile", "authorityFile", "revocationFile", "roles"})
    {
        Deregister(key); // before the members, to which the base class refers, are destroyed
    }
}

void TcpParams::SetDefaults()
{
    port.Set(defaultPort);
    address.Set(DEFAULT_ADDRESS);
    maxClients.Set(DEFAULT_MAX_CLIENTS);
    idleTimeout.Set(DEFAULT_IDLE_TIMEOUT);
    makeRoomAfter.Set(DEFAULT_MAKE_ROOM_AFTER);
    allowedClients.Set("");
    writers.Set("");
    readOnly.Set(false);
    security.Set(TcpSecurity::OFF);
    certificateFile.Set("");
    keyFile.Set("");
    authorityFile.Set("");
    revocationFile.Set("");
    roles.Set("");
}

TcpSettings TcpParams::Settings() const
{
    return {.address = address.Get().substr(0, LONGEST_ADDRESS + 1),
            .port = port.Get(),
            .maxClients = std::min(maxClients.Get(), MOST_CLIENTS),
            .idleTimeoutUsec = UsecOf(idleTimeout.Get()),
            .makeRoomAfterUsec = UsecOf(makeRoomAfter.Get()),
            .allowedClients = allowedClients.Get(),
            .writers = writers.Get(),
            .isReadOnly = readOnly.Get(),
            .security = security.Get(),
            .certificateFile = certificateFile.Get(),
            .keyFile = keyFile.Get(),
            .authorityFile = authorityFile.Get(),
            .revocationFile = revocationFile.Get(),
            .roles = roles.Get()};
}

void TcpParams::RegisterLimits()
{
    RegisterTime("idleTimeout", "Idle Timeout", idleTimeout);
    RegisterTime("makeRoomAfter", "Idle Time Until a Client Makes Room", makeRoomAfter);
    Register("allowedClients", "Networks That May Connect", allowedClients);
    Register("writers", "Networks That May Write", writers);
    Register("readOnly", "Read Only", readOnly);
    Register("security", "Security", security);
    security.AddOption(TcpSecurity::OFF, "Off");
    security.AddOption(TcpSecurity::SERVER_CERTIFICATE, "TLS");
    security.AddOption(TcpSecurity::CLIENT_CERTIFICATES, "TLS with Client Certificates");
    Register("certificateFile", "File of the Certificate", certificateFile);
    Register("keyFile", "File of the Private Key", keyFile);
    Register("authorityFile", "File of the Authorities of Clients", authorityFile);
    Register("revocationFile", "File of the Revoked Certificates of Clients", revocationFile);
    Register("roles", "Roles in Client Certificates", roles);
}

void TcpParams::RegisterTime(char const* key, char const* title, Zu::Params::Value<uint32>& value)
{
    Register(key, title, value);
    Bound(value, 1, LONGEST_IDLE_TIMEOUT);
    value.EnableUnits(true).GetUnits().Set("s");
}

void TcpParams::Bound(Zu::Params::Value<uint32>& value, uint32 least, uint32 most)
{
    value.SetMinimum(least);
    value.EnableMaximum(true).GetMaximum().Set(most);
}

} // namespace PluginCommon
