#include "ZuScan/IActionTarget.h"

namespace ZuScan
{

IActionTarget::~IActionTarget() = default;

} // namespace ZuScan
