#include "ZuControl/Control/IControlActionTarget.h"

namespace ZuControl
{

IControlActionTarget::~IControlActionTarget() = default;

} // namespace ZuControl
