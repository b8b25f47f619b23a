#pragma once

#include "ZuControl/Control/ControlHardwareBase.h"

namespace ZuControl
{

/// An analog output of the sensor, which drives a current.
class ZUCONTROL_API ControlAnalogOutput final : public ControlHardwareBase
{
public:
    /// The source that drives the output. The values belong to the sensor and are passed on unchanged:
    /// `ZuStdScanners::ZucSensor::AnalogOutputControlType`.
    enum class AnalogOutputControlType : uint8
    {
    };

    /// The range of currents of the output, as the sensor reports it.
    struct AnalogOutputConstraint
    {
        double absoluteMin;
        double absoluteMax;
    };

    ControlAnalogOutput(uint64 newIndex, ZuScan::ISensor& usedSensor);
    ~ControlAnalogOutput() override;

    ControlAnalogOutput(ControlAnalogOutput const&) = default;
    ControlAnalogOutput& operator=(ControlAnalogOutput const&) = delete;

    ZuHardwareIOType HardwareIoType() const override;

    // The next operations block and throw as IControlHardware says.

    /// Appends a current, in milliamperes, to the sensor's queue of currents to drive.
    void EnqueueOutput(double current);

    /// Asks the sensor. Throws std::bad_cast for an answer of another class, or for none.
    AnalogOutputConstraint GetConstraints();

    /// The number of the sensor's event that drives the output, for a control type that is driven by an event.
    void SetControlId(uint32 controlId);

    void SetControlType(AnalogOutputControlType controlType);
};

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

/// A serial output of the sensor, which sends text.
class ZUCONTROL_API ControlSerialOutput final : public ControlHardwareBase
{
public:
    /// The source that drives the output. The values belong to the sensor and are passed on unchanged:
    /// `ZuStdScanners::ZucSensor::SerialOutputControlType`.
    enum class SerialOutputControlType : uint8
    {
    };

    /// How the output sends. The values belong to the sensor and are passed on unchanged:
    /// `ZuStdScanners::ZucSensor::SerialOutputControlMode`.
    enum class SerialOutputControlMode : uint8
    {
    };

    ControlSerialOutput(uint64 newIndex, ZuScan::ISensor& usedSensor);
    ~ControlSerialOutput() override;

    ControlSerialOutput(ControlSerialOutput const&) = default;
    ControlSerialOutput& operator=(ControlSerialOutput const&) = delete;

    ZuHardwareIOType HardwareIoType() const override;

    // The next operations block and throw as IControlHardware says.

    /// In bits per second.
    void SetControlBitRate(uint32 bitRate);

    /// The number of the sensor's event that drives the output, for a control type that is driven by an event.
    void SetControlId(uint32 controlId);

    void SetControlMode(SerialOutputControlMode controlMode);

    void SetControlType(SerialOutputControlType controlType);

    /// Sends `text` without its terminating NUL. An empty text is sent as a command too.
    void Write(char const* text);
};

} // namespace ZuControl
