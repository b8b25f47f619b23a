#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

/// The ids that the protocol can send, as information for clients. The map accepts other ids too.
struct ZUCONTROL_API StandardOutputsAttributes : public Zu::Params::Group
{
    StandardOutputsAttributes();
    ~StandardOutputsAttributes() override;

    Zu::Params::Value<uint16> outputIdMin;
    Zu::Params::Value<uint16> outputIdMax;
};

} // namespace ZuControl::ControlProtocol
