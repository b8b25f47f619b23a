#pragma once

namespace ZuControl
{
class IControlActionTarget;
}

namespace ZuControl::ControlProtocol
{

class IProtocolRegisterAssembly;

/// One assembly of a group with the action target that changes it; the protocol owns both.
struct RegisterAssemblyInstance
{
    IProtocolRegisterAssembly* assembly = nullptr;
    IControlActionTarget* actionTarget = nullptr;
};

} // namespace ZuControl::ControlProtocol
