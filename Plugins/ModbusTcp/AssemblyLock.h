#pragma once

#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"

namespace ModbusTcp
{

/// Holds an assembly's lock; its list may be walked meanwhile. Not to be nested: the inner end would close the list for the
/// outer one.
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
