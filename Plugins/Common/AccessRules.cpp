#include "Plugins/Common/AccessRules.h"

#include "Plugins/Common/TcpServer.h"

namespace PluginCommon
{

using ZuCommon::Role;

AccessRules::AccessRules(TcpSettings const& settings)
    : allowedClients(settings.allowedClients, "allowedClients"),
      writers(settings.writers, "writers"),
      isReadOnly(settings.isReadOnly)
{
}

AccessRules::~AccessRules() = default;

Role AccessRules::RoleOf(Address const& address) const
{
    bool const mayWrite = !isReadOnly && (writers.IsEmpty() || writers.Contains(address));
    return mayWrite ? Role::OPERATOR : Role::VIEWER;
}

} // namespace PluginCommon
