#pragma once

#include "ZuControl/Control/IControlHardware.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <list>

namespace ZuControl
{

/// The inputs and outputs of the sensor, by kind and index. It is filled before a protocol starts and only looked up from then
/// on, by any thread.
class ZUCONTROL_API IControlHardwareManager
{
public:
    using ZuHardwareIOType = IControlHardware::ZuHardwareIOType;

    IControlHardwareManager() noexcept;
    virtual ~IControlHardwareManager(); // first of the slots that plug-ins call through: never move one

    /// The kinds of which the sensor has any; empty without a sensor.
    virtual std::list<ZuHardwareIOType> SupportedHardwareInterfaces() const = 0;

    /// How many of a kind there are; -999 for what is no kind.
    virtual uint64 GetInterfaceCount(ZuHardwareIOType kind) const = 0;

    /// The object of a kind, counted from 0: it can be cast to the class of its kind, and lives as long as the manager. -999
    /// behind the last, -997 for what is no kind; neither has a text.
    virtual IControlHardware& GetHardwareInterface(ZuHardwareIOType kind, uint64 index) = 0;
};

} // namespace ZuControl
