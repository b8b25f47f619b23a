#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl
{

/// One input or output of the sensor. Its kind decides which further operations it has: see the class beside each kind.
///
/// Ownership: the hardware manager owns the object. Threads: any, several at once. Every call but the first is a
/// command to the sensor, which alone knows the state. It runs on the caller's thread, blocks until the sensor has
/// carried it out, and does not pass through the queue of ControlProtocolOperations; the sensor puts the commands in
/// order. All operations but the first throw `Zu::Status::WRONG_STATE`, no text, when the sensor takes no commands, and
/// the exceptions of the sensor.
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

    /// Does not change. Neither blocks nor throws.
    virtual ZuHardwareIOType HardwareIoType() const = 0;

    virtual bool IsEnabled() = 0;

    /// Switches the input or output on or off.
    virtual void Enable(bool enable) = 0;
};

} // namespace ZuControl
