#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

/// The register space of a map.
struct ZUCONTROL_API RegisterOutputsAttributes : public Zu::Params::Group
{
    RegisterOutputsAttributes();
    ~RegisterOutputsAttributes() override;

    Zu::Params::Value<uint16> start;    ///< address of the first register
    Zu::Params::Value<uint16> count;    ///< how many registers there are
    Zu::Params::Value<uint16> itemSize; ///< of one register, in the unit of the items' "outputSize"
};

} // namespace ZuControl::ControlProtocol
