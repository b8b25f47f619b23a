#pragma once

#include "Plugins/Common/AccessList.h"
#include "Plugins/Common/RoleTable.h"
#include "Plugins/Common/TcpServer.h"
#include "ZuCommon/Role.h"

#include <memory>
#include <string>
#include <string_view>

namespace ZuTls
{
class Context;
}

namespace PluginCommon
{

/// The rules by which a server judges its clients. Immutable: any thread may use them.
class AccessRules final
{
public:
    using Address = boost::asio::ip::address;

    using Tls = std::shared_ptr<ZuTls::Context const>;

    /// Reads the certificates of the settings. Returns null for a server without TLS. Throws `Zu::Status::BAD_ARGUMENT` with
    /// a sentence for a file that cannot be used.
    static Tls ReadCertificates(TcpSettings const& settings);

    /// Throws `Zu::Status::BAD_ARGUMENT` with a text that names the faulty parameter and its entry.
    explicit AccessRules(TcpSettings const& settings, Tls newTls = nullptr);
    ~AccessRules();
    AccessRules(AccessRules const&) = delete;
    AccessRules& operator=(AccessRules const&) = delete;

    bool MayConnect(Address const& address) const
    {
        return allowedClients.IsEmpty() || allowedClients.Contains(address);
    }

    /// Whether every client that reaches the server may connect.
    bool AdmitsEveryone() const
    {
        return allowedClients.IsEmpty() && security != TcpSecurity::CLIENT_CERTIFICATES;
    }

    /// Whether a client that was admitted by `older` has shown what these rules ask for.
    bool DemandNoMoreThan(AccessRules const& older) const
    {
        return security == older.security && authorityFile == older.authorityFile &&
               revocationFile == older.revocationFile;
    }

    /// `certified` is the text of the role in the client's certificate. If clients show no certificates, a client that may
    /// write is an OPERATOR. A client that may not write is a VIEWER at most.
    ZuCommon::Role RoleOf(Address const& address, std::string_view certified) const;

    /// Null without TLS.
    Tls const& Context() const
    {
        return tls;
    }

private:
    AccessList const allowedClients;
    AccessList const writers;
    bool const isReadOnly;
    RoleTable const roles;
    TcpSecurity const security;
    std::string const authorityFile;
    std::string const revocationFile;
    Tls const tls;
};

} // namespace PluginCommon
