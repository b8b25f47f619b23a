#pragma once

#include "ZuControl/Control/ControlHardwareBase.h"

namespace ZuControl
{

/// A digital output of the sensor: a pin that follows a state or gives pulses.
class ZUCONTROL_API ControlDigitalOutput final : public ControlHardwareBase
{
public:
    /// What drives the output. The values are the sensor's and go there as they are:
    /// `ZuStdScanners::ZucSensor::DigitalOutputControlType`.
    enum class DigitalOutputControlType : uint8
    {
    };

    ControlDigitalOutput(uint64 newIndex, ZuScan::ISensor& usedSensor);
    ~ControlDigitalOutput() override;

    ControlDigitalOutput(ControlDigitalOutput const&) = default;
    ControlDigitalOutput& operator=(ControlDigitalOutput const&) = delete;

    ZuHardwareIOType HardwareIoType() const override;

    // What follows throws as the operations of the interface do.

    /// Back to the settings that the sensor begins with.
    void ClearSettings();

    void SetControlType(DigitalOutputControlType controlType);

    /// Which of the sensor's events drives the output, where its type is to be driven by one.
    void SetControlId(uint32 controlId);

    /// `exposure`: how long a pulse lasts, in microseconds.
    void SetControlExposure(uint64 exposure);

    void SetControlPolarity(bool isActiveHigh);

    void SetControlState(bool state);

    /// Gives one pulse.
    void Trigger();
};

} // namespace ZuControl
