#include "ZuStdScanners/ZucSensor/AnalogOutputControlType.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::AnalogOutputControlType);
