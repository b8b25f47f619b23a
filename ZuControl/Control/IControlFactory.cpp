#include "ZuControl/Control/IControlFactory.h"

namespace ZuControl
{

IControlFactory::~IControlFactory() = default;

} // namespace ZuControl
