#include "ZuStdScanners/ZucSensor/IoType.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::IoType);
