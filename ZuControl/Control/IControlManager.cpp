#include "ZuControl/Control/IControlManager.h"

namespace ZuControl
{

IControlManager::~IControlManager() = default;

} // namespace ZuControl
