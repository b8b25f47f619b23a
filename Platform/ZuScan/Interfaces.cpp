// The destructors of this folder's interfaces.

#include "ZuScan/Sensor.h"

namespace ZuScan
{

IActionTarget::~IActionTarget() = default;

ICommandTarget::~ICommandTarget() = default;

IScanner::~IScanner() = default;

ISensor::~ISensor() = default;

} // namespace ZuScan
