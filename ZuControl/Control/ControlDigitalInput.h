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

    // What follows throws as the operations of the interface do.

    /// Back to the settings that the sensor begins with.
    void ClearSettings();

    /// The pin of this number becomes an input.
    void SetPinTypeToInput(uint64 pin);

    /// Whether a change at the pin is an event of the sensor: any `enable` but 0 is yes.
    void EnableEvents(uint64 pin, int32 enable);
};

} // namespace ZuControl
