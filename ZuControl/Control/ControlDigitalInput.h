#pragma once

#include "ZuControl/Control/ControlHardwareBase.h"

namespace ZuControl
{

/// A digital input of the sensor. Its level comes with every frame, in the status of the stamp.
class ZUCONTROL_API ControlDigitalInput final : public ControlHardwareBase
{
public:
    ControlDigitalInput(uint64 newIndex, ZuScan::ISensor& usedSensor);
    ~ControlDigitalInput() override;

    ControlDigitalInput(ControlDigitalInput const&) = default;
    ControlDigitalInput& operator=(ControlDigitalInput const&) = delete;

    ZuHardwareIOType HardwareIoType() const override;

    // The next operations block and throw as IControlHardware says.

    /// Restores the sensor's initial settings.
    void ClearSettings();

    /// Makes the pin with this number an input.
    void SetPinTypeToInput(uint64 pin);

    /// Makes a change at the pin an event of the sensor, unless `enable` is 0.
    void EnableEvents(uint64 pin, int32 enable);
};

} // namespace ZuControl
