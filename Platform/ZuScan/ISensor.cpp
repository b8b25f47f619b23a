#include "ZuScan/ISensor.h"

namespace ZuScan
{

ISensor::~ISensor() = default;

} // namespace ZuScan
