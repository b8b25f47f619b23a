#include "ZuStdScanners/ZucSensor/DigitalRecords.h"

namespace ZuStdScanners::ZucSensor
{

DigitalInputEnableEventsParams::DigitalInputEnableEventsParams()
{
    Register("pin", "Pin", pin);
    Register("enable", "Enable", enable);
}

DigitalInputEnableEventsParams::~DigitalInputEnableEventsParams() = default;

DigitalInputSetPinTypeParams::DigitalInputSetPinTypeParams()
{
    Register("pin", "Pin", pin);
}

DigitalInputSetPinTypeParams::~DigitalInputSetPinTypeParams() = default;

} // namespace ZuStdScanners::ZucSensor

ZU_INSTANTIATE_ENUM_VALUE(ZuStdScanners::ZucSensor::DigitalOutputControlType);

namespace ZuStdScanners::ZucSensor
{

DigitalOutputSetControlIdParams::DigitalOutputSetControlIdParams()
{
    Register("controlId", "ControlId", controlId);
}

DigitalOutputSetControlIdParams::~DigitalOutputSetControlIdParams() = default;

DigitalOutputSetControlTypeParams::DigitalOutputSetControlTypeParams()
{
    Register("controlType", "ControlType", controlType);
}

DigitalOutputSetControlTypeParams::~DigitalOutputSetControlTypeParams() = default;

DigitalOutputSetExposureParams::DigitalOutputSetExposureParams()
{
    Register("exposure", "Exposure", exposure);
}

DigitalOutputSetExposureParams::~DigitalOutputSetExposureParams() = default;

DigitalOutputSetPolarityParams::DigitalOutputSetPolarityParams()
{
    Register("isActiveHigh", "IsActiveHigh", isActiveHigh);
}

DigitalOutputSetPolarityParams::~DigitalOutputSetPolarityParams() = default;

DigitalOutputSetStateParams::DigitalOutputSetStateParams()
{
    Register("state", "State", state);
}

DigitalOutputSetStateParams::~DigitalOutputSetStateParams() = default;

} // namespace ZuStdScanners::ZucSensor
