#pragma once

#include "ZuControl/Control/ControlHardwareBase.h"

namespace ZuControl
{

/// A serial output of the sensor, which sends text.
class ZUCONTROL_API ControlSerialOutput final : public ControlHardwareBase
{
public:
    /// What drives the output. The values are the sensor's and go there as they are:
    /// `ZuStdScanners::ZucSensor::SerialOutputControlType`.
    enum class SerialOutputControlType : uint8
    {
    };

    /// How the output sends. The values are the sensor's and go there as they are:
    /// `ZuStdScanners::ZucSensor::SerialOutputControlMode`.
    enum class SerialOutputControlMode : uint8
    {
    };

    ControlSerialOutput(uint64 newIndex, ZuScan::ISensor& usedSensor);
    ~ControlSerialOutput() override;

    ControlSerialOutput(ControlSerialOutput const&) = default;
    ControlSerialOutput& operator=(ControlSerialOutput const&) = delete;

    ZuHardwareIOType HardwareIoType() const override;

    // What follows throws as the operations of the interface do.

    /// In bits per second.
    void SetControlBitRate(uint32 bitRate);

    /// Which of the sensor's events drives the output, where its type is to be driven by one.
    void SetControlId(uint32 controlId);

    void SetControlMode(SerialOutputControlMode controlMode);

    void SetControlType(SerialOutputControlType controlType);

    /// Sends `text` up to its end, which is not sent. The empty text is a command too.
    void Write(char const* text);
};

} // namespace ZuControl
