#pragma once

#include "ZuControl/Control/ControlHardwareBase.h"

namespace ZuControl
{

/// A digital output of the sensor: a pin that follows a state or gives pulses.
class ZUCONTROL_API ControlDigitalOutput final : public ControlHardwareBase
{
public:
    /// The source that drives the output. The values belong to the sensor and are passed on unchanged:
    /// `ZuStdScanners::ZucSensor::DigitalOutputControlType`.
    enum class DigitalOutputControlType : uint8
    {
    };

    ControlDigitalOutput(uint64 newIndex, ZuScan::ISensor& usedSensor);
    ~ControlDigitalOutput() override;

    ControlDigitalOutput(ControlDigitalOutput const&) = default;
    ControlDigitalOutput& operator=(ControlDigitalOutput const&) = delete;

    ZuHardwareIOType HardwareIoType() const override;

    // The next operations block and throw as IControlHardware says.

    /// Restores the sensor's initial settings.
    void ClearSettings();

    void SetControlType(DigitalOutputControlType controlType);

    /// The number of the sensor's event that drives the output, for a control type that is driven by an event.
    void SetControlId(uint32 controlId);

    /// `exposure`: how long a pulse lasts, in microseconds.
    void SetControlExposure(uint64 exposure);

    void SetControlPolarity(bool isActiveHigh);

    void SetControlState(bool state);

    /// Gives one pulse.
    void Trigger();
};

} // namespace ZuControl
