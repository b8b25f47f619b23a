// The destructors of this folder's interfaces.

#include "ZuScan/IActionTarget.h"
#include "ZuScan/ICommandTarget.h"
#include "ZuScan/IScanner.h"
#include "ZuScan/ISensor.h"

namespace ZuScan
{

IActionTarget::~IActionTarget() = default;

ICommandTarget::~ICommandTarget() = default;

IScanner::~IScanner() = default;

ISensor::~ISensor() = default;

} // namespace ZuScan
