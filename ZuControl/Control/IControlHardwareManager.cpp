#include "ZuControl/Control/IControlHardwareManager.h"

namespace ZuControl
{

IControlHardwareManager::~IControlHardwareManager() = default;

} // namespace ZuControl
