#pragma once

#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"

namespace ModbusTcp
{

/// Holds an assembly's lock, so that its list can be iterated. Do not nest it: the inner destructor would close the
/// list for the outer one.
class AssemblyLock final
{
public:
    explicit AssemblyLock(ZuControl::ControlProtocol::IProtocolRegisterAssembly& lockedAssembly);
    ~AssemblyLock();
    AssemblyLock(AssemblyLock const&) = delete;
    AssemblyLock& operator=(AssemblyLock const&) = delete;

private:
    ZuControl::ControlProtocol::IProtocolRegisterAssembly& assembly;
};

} // namespace ModbusTcp
