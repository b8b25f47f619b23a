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

/// The objects that a derived protocol gives to `ProtocolBase::Init`; a pointer is null when the protocol has no such
/// object. The derived protocol owns them and keeps them for its whole life.
struct ProtocolInitParams
{
    Zu::Params::Group* params = nullptr;
    IProtocolOutput* outputs = nullptr;
    IControlActionTarget* outputsActionTarget = nullptr;
    Zu::Properties::Structure* metricsData = nullptr; ///< holds "controlDrops", a Metric or a Value<uint64>
    IProtocolRegisterAssemblyGroup* registerAssemblyGroup = nullptr;
};

} // namespace ZuControl::ControlProtocol
