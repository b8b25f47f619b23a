#include "ZuStdScanners/ZucSensor/SerialOutputControlMode.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::SerialOutputControlMode);
