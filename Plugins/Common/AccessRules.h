#pragma once

#include "Plugins/Common/AccessList.h"
#include "ZuCommon/Role.h"

namespace PluginCommon
{

struct TcpSettings;

/// The rules by which a server judges its clients. Immutable: any thread may use them.
class AccessRules final
{
public:
    using Address = boost::asio::ip::address;

    /// Throws `Zu::Status::BAD_ARGUMENT` with a text that names the faulty parameter and its entry.
    explicit AccessRules(TcpSettings const& settings);
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
        return allowedClients.IsEmpty();
    }

    /// OPERATOR for a client that may write, VIEWER for any other.
    ZuCommon::Role RoleOf(Address const& address) const;

private:
    AccessList const allowedClients;
    AccessList const writers;
    bool const isReadOnly;
};

} // namespace PluginCommon
