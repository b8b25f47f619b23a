#include "ZuControl/Control/IControlInstance.h"

namespace ZuControl
{

IControlInstance::~IControlInstance() = default;

} // namespace ZuControl
