#pragma once

#include "ZuApi/Guard.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"

namespace ZuControl::ControlProtocol
{

/// Holds the lock of an assembly, which a reader of its lists needs. Do not nest it: the inner destructor would close the
/// lists for the outer one.
class AssemblyLock final
{
public:
    explicit AssemblyLock(IProtocolRegisterAssembly& lockedAssembly) : assembly(lockedAssembly)
    {
        assembly.BeginLock();
    }

    ~AssemblyLock()
    {
        ZU_GUARD_DESTRUCTOR([this] { assembly.EndLock(); });
    }

    AssemblyLock(AssemblyLock const&) = delete;
    AssemblyLock& operator=(AssemblyLock const&) = delete;

private:
    IProtocolRegisterAssembly& assembly;
};

} // namespace ZuControl::ControlProtocol
