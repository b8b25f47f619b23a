#include "ZuControl/Control/IControlScanResults.h"

namespace ZuControl
{

IControlScanResults::~IControlScanResults() = default;

} // namespace ZuControl
