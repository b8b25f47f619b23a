#include "ZuStdScanners/ZucSensor/DigitalOutputControlType.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::DigitalOutputControlType);
