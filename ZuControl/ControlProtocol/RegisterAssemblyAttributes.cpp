#include "ZuControl/ControlProtocol/RegisterAssemblyAttributes.h"

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

} // namespace ZuControl::ControlProtocol
