#pragma once

namespace Zu::Params
{
class Group;
}

namespace Zu::Properties
{
class Structure;
}

namespace ZuControl
{
class IControlActionTarget;
}

namespace ZuControl::ControlProtocol
{

class IProtocolOutput;
class IProtocolRegisterAssemblyGroup;

/// What a derived protocol hands to `ProtocolBase::Init`. All of it stays the protocol's and outlives the base's use; what
/// a protocol does not have is null.
struct ProtocolInitParams
{
    Zu::Params::Group* params = nullptr;
    IProtocolOutput* outputs = nullptr;
    IControlActionTarget* outputsActionTarget = nullptr;
    Zu::Properties::Structure* metricsData = nullptr; ///< holds "controlDrops", a Metric or a Value<uint64>
    IProtocolRegisterAssemblyGroup* registerAssemblyGroup = nullptr;
};

} // namespace ZuControl::ControlProtocol
