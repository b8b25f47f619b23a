#include "ZuControl/ControlProtocol/RegisterAssemblyProperties.h"

namespace ZuControl::ControlProtocol
{

RegisterAssemblyProperties::RegisterAssemblyProperties() : Group("")
{
    Register("displayName", "Register Assembly display name", displayName).EnableReadOnly().readOnly.Set(true);
    Register("id", "Register Assembly Identifier", id).EnableReadOnly().readOnly.Set(true);
}

RegisterAssemblyProperties::~RegisterAssemblyProperties()
{
    for (char const* const key : {"displayName", "id"})
    {
        Deregister(key);
    }
}

} // namespace ZuControl::ControlProtocol
