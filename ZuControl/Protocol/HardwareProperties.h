#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Export.h"

#include <string>

namespace ZuControl::Protocol
{

/// The document of one sensor device.
struct ZUCONTROL_INTERNAL_API HardwareProperties final : public Zu::Properties::Structure
{
    HardwareProperties();
    ~HardwareProperties() override;

    Zu::Properties::Value<std::string> label; ///< empty: devices have no names of their own
};

} // namespace ZuControl::Protocol
