#include "ZuControl/ControlProtocol/RegisterAssemblyProperties.h"

namespace ZuControl::ControlProtocol
{

RegisterAssemblyAttributes::RegisterAssemblyAttributes() : Group("")
{
    Register("isGlobalAddressSpaceUsed", "Is Global Address Space Used", isGlobalAddressSpaceUsed)
        .EnableReadOnly()
        .readOnly.Set(true);
    Register("outputIdMin", "Minimum Output Id", outputIdMin)
        .EnableMinimum(true)
        .SetMinimum(0)
        .EnableReadOnly()
        .readOnly.Set(true);
    Register("outputIdMax", "Maximum Output Id", outputIdMax)
        .EnableMinimum(true)
        .SetMinimum(0)
        .EnableReadOnly()
        .readOnly.Set(true);
}

RegisterAssemblyAttributes::~RegisterAssemblyAttributes()
{
    for (char const* const key : {"isGlobalAddressSpaceUsed", "outputIdMin", "outputIdMax"})
    {
        Deregister(key);
    }
}

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
