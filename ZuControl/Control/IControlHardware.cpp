#include "ZuControl/Control/IControlHardware.h"

namespace ZuControl
{

IControlHardware::~IControlHardware() = default;

} // namespace ZuControl
