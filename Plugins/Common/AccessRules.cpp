#include "Plugins/Common/AccessRules.h"

#include "ZuApi/Exception.h"
#include "ZuTls/Context.h"

#include <algorithm>

namespace PluginCommon
{

using ZuCommon::Role;

AccessRules::Tls AccessRules::ReadCertificates(TcpSettings const& settings)
{
    if (settings.security == TcpSecurity::OFF)
    {
        return nullptr;
    }
    bool const asksClients = settings.security == TcpSecurity::CLIENT_CERTIFICATES;
    ZuTls::Settings const files{.certificateFile = settings.certificateFile,
                                .keyFile = settings.keyFile,
                                .authoritiesFile = settings.authorityFile,
                                .peerProof = asksClients ? ZuTls::PeerProof::CERTIFICATE : ZuTls::PeerProof::NOTHING,
                                .peerName = "",
                                .revocationsFile = settings.revocationFile};
    return std::make_shared<ZuTls::Context const>(ZuTls::Side::SERVER, files);
}

AccessRules::AccessRules(TcpSettings const& settings, Tls newTls)
    : allowedClients(settings.allowedClients, "allowedClients"),
      writers(settings.writers, "writers"),
      isReadOnly(settings.isReadOnly),
      roles(settings.roles),
      security(settings.security),
      authorityFile(settings.authorityFile),
      revocationFile(settings.revocationFile),
      tls(std::move(newTls))
{
    if (security < TcpSecurity::OFF || security > TcpSecurity::CLIENT_CERTIFICATES)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "security: %d is none of 0 (off), 1 (server certificate) and 2 (client certificates)",
                 static_cast<int>(security));
    }
}

AccessRules::~AccessRules() = default;

Role AccessRules::RoleOf(Address const& address, std::string_view certified) const
{
    bool const mayWrite = !isReadOnly && (writers.IsEmpty() || writers.Contains(address));
    Role const own = security == TcpSecurity::CLIENT_CERTIFICATES ? roles.RoleOf(certified) : Role::OPERATOR;
    return mayWrite ? own : std::min(own, Role::VIEWER);
}

} // namespace PluginCommon
