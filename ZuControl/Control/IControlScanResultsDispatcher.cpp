#include "ZuControl/Control/IControlScanResultsDispatcher.h"

namespace ZuControl
{

IControlScanResultsDispatcher::~IControlScanResultsDispatcher() = default;

} // namespace ZuControl
