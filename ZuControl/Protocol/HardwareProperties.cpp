#include "ZuControl/Protocol/HardwareProperties.h"

namespace ZuControl::Protocol
{

HardwareProperties::HardwareProperties() : Structure(true)
{
    Register("label", label);
}

HardwareProperties::~HardwareProperties() = default;

} // namespace ZuControl::Protocol
