#include "ZuControl/ControlProtocol/StandardOutputs.h"

namespace ZuControl::ControlProtocol
{

StandardOutputs::StandardOutputs()
{
    Register("map", "OutputMap", map);
    Register("attributes", "Attributes", attributes);
}

StandardOutputs::~StandardOutputs() = default;

} // namespace ZuControl::ControlProtocol
