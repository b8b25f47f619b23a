#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl
{

/// One input or output of the sensor. What more it can do depends on its kind: see the class that stands beside each.
///
/// Every call is a command to the sensor, which alone knows the state. Any thread may call, several at once; the sensor puts
/// the commands in order. All operations but the first throw -1000 when the sensor takes no commands, and what the sensor
/// throws.
class ZUCONTROL_API IControlHardware
{
public:
    /// The numbers are those by which the sensor knows the kinds.
    enum class ZuHardwareIOType : uint8
    {
        ANALOG_OUTPUT = 1,  ///< `ControlAnalogOutput`
        SERIAL_OUTPUT = 2,  ///< `ControlSerialOutput`
        DIGITAL_OUTPUT = 3, ///< `ControlDigitalOutput`
        DIGITAL_INPUT = 4   ///< `ControlDigitalInput`
    };

    IControlHardware() noexcept;
    virtual ~IControlHardware(); // first of the slots that plug-ins call through: never move one

    virtual ZuHardwareIOType HardwareIoType() const = 0;

    virtual bool IsEnabled() = 0;

    /// Switches it on or off.
    virtual void Enable(bool enable) = 0;
};

} // namespace ZuControl
