#include "ZuControl/ControlProtocol/RegisterOutputsAttributes.h"

namespace ZuControl::ControlProtocol
{

RegisterOutputsAttributes::RegisterOutputsAttributes() : Group("")
{
    Register("start", "Start", start);
    Register("count", "Count", count);
    Register("itemSize", "ItemSize", itemSize);
}

RegisterOutputsAttributes::~RegisterOutputsAttributes() = default;

} // namespace ZuControl::ControlProtocol
