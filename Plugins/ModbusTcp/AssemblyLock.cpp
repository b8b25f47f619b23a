#include "Plugins/ModbusTcp/AssemblyLock.h"

#include "ZuApi/Guard.h"

namespace ModbusTcp
{

AssemblyLock::AssemblyLock(ZuControl::ControlProtocol::IProtocolRegisterAssembly& lockedAssembly)
    : assembly(lockedAssembly)
{
    assembly.BeginLock();
}

AssemblyLock::~AssemblyLock()
{
    ZU_GUARD_DESTRUCTOR([this] { assembly.EndLock(); });
}

} // namespace ModbusTcp
