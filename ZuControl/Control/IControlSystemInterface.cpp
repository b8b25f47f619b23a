#include "ZuControl/Control/IControlSystemInterface.h"

namespace ZuControl
{

IControlSystemInterface::~IControlSystemInterface() = default;

} // namespace ZuControl
