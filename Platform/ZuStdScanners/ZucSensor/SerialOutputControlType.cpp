#include "ZuStdScanners/ZucSensor/SerialOutputControlType.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::SerialOutputControlType);
