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

} // namespace ZuControl
