#pragma once

#include "ZuControl/Control/ControlHardwareBase.h"

namespace ZuControl
{

/// An analog output of the sensor, which drives a current.
class ZUCONTROL_API ControlAnalogOutput final : public ControlHardwareBase
{
public:
    /// What drives the output. The values are the sensor's and go there as they are:
    /// `ZuStdScanners::ZucSensor::AnalogOutputControlType`.
    enum class AnalogOutputControlType : uint8
    {
    };

    /// The currents between which the output can go, as the sensor reports them.
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

    // What follows throws as the operations of the interface do.

    /// Puts a current behind those that the sensor has yet to drive; in milliamperes.
    void EnqueueOutput(double current);

    /// Asks the sensor. Throws std::bad_cast for an answer that is none.
    AnalogOutputConstraint GetConstraints();

    /// Which of the sensor's events drives the output, where its type is to be driven by one.
    void SetControlId(uint32 controlId);

    void SetControlType(AnalogOutputControlType controlType);
};

} // namespace ZuControl
