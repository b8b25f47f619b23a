#pragma once

#include "ZuControl/Control/ControlHardwareBase.h"

namespace ZuControl
{

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
