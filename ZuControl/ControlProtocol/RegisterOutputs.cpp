#include "ZuControl/ControlProtocol/RegisterOutputs.h"

namespace ZuControl::ControlProtocol
{

RegisterOutputs::RegisterOutputs()
{
    Register("map", "OutputMap", map);
    Register("attributes", "Attributes", attributes);
}

RegisterOutputs::~RegisterOutputs() = default;

} // namespace ZuControl::ControlProtocol
