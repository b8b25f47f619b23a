#include "ZuStdScanners/ZucSensor/SerialOutputRecords.h"

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::SerialOutputControlMode);

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::SerialOutputControlType);

namespace ZuStdScanners::ZucSensor
{

SerialOutputSetBitRateParams::SerialOutputSetBitRateParams()
{
    Register("bitRate", "BitRate", bitRate);
}

SerialOutputSetBitRateParams::~SerialOutputSetBitRateParams() = default;

SerialOutputSetControlIdParams::SerialOutputSetControlIdParams()
{
    Register("controlId", "ControlId", controlId);
}

SerialOutputSetControlIdParams::~SerialOutputSetControlIdParams() = default;

SerialOutputSetControlTypeParams::SerialOutputSetControlTypeParams()
{
    Register("controlType", "ControlType", controlType);
}

SerialOutputSetControlTypeParams::~SerialOutputSetControlTypeParams() = default;

SerialOutputSetModeParams::SerialOutputSetModeParams()
{
    Register("controlMode", "ControlMode", controlMode);
}

SerialOutputSetModeParams::~SerialOutputSetModeParams() = default;

SerialOutputWriteParams::SerialOutputWriteParams()
{
    Register("size", "Size", size);
    Register("buffer", "Buffer", buffer);
}

SerialOutputWriteParams::~SerialOutputWriteParams() = default;

} // namespace ZuStdScanners::ZucSensor
