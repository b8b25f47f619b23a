#pragma once

#include "ZuControl/Control/IControlHardware.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <list>

namespace ZuControl
{

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
