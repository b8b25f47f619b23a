#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <list>

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

/// The inputs and outputs of the sensor, by kind and index.
///
/// Ownership: the module owns the manager, and the manager owns its objects; both outlive the protocols. Threads and
/// states: the manager is empty while protocols are constructed. The host fills it before it enables a protocol; from
/// then on the content does not change, and any thread may call. No operation blocks.
class ZUCONTROL_API IControlHardwareManager
{
public:
    using ZuHardwareIOType = IControlHardware::ZuHardwareIOType;

    IControlHardwareManager() noexcept;
    virtual ~IControlHardwareManager(); // first of the slots that plug-ins call through: never move one

    /// The kinds of which the sensor has any; empty without a sensor.
    virtual std::list<ZuHardwareIOType> SupportedHardwareInterfaces() const = 0;

    /// How many objects of a kind there are. Throws `Zu::Status::NOT_FOUND`, no text, for a value that is no kind.
    virtual uint64 GetInterfaceCount(ZuHardwareIOType kind) const = 0;

    /// The object of a kind, counted from 0. The caller may cast it to the class of its kind. Throws
    /// `Zu::Status::NOT_FOUND` for an index behind the last object and `Zu::Status::BAD_ARGUMENT` for a value that is
    /// no kind; neither has a text.
    virtual IControlHardware& GetHardwareInterface(ZuHardwareIOType kind, uint64 index) = 0;
};

} // namespace ZuControl
