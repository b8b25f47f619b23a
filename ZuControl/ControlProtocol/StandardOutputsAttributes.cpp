#include "ZuControl/ControlProtocol/StandardOutputsAttributes.h"

namespace ZuControl::ControlProtocol
{

StandardOutputsAttributes::StandardOutputsAttributes() : Group("")
{
    Register("outputIdMin", "Minimum Output Id", outputIdMin);
    Register("outputIdMax", "Maximum Output Id", outputIdMax);
}

StandardOutputsAttributes::~StandardOutputsAttributes() = default;

} // namespace ZuControl::ControlProtocol
