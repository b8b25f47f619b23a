#include "ZuControl/Control/IControlScanEngineInterface.h"

namespace ZuControl
{

IControlScanEngineInterface::~IControlScanEngineInterface() = default;

} // namespace ZuControl
