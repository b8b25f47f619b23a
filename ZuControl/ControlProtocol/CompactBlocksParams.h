#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

/// The output id from which the blocks follow each other without gaps.
struct ZUCONTROL_API CompactBlocksParams : public Zu::Params::Group
{
    CompactBlocksParams();
    ~CompactBlocksParams() override;

    Zu::Params::Value<uint16> startingOutputId; ///< 65535: from the assembly's first
};

} // namespace ZuControl::ControlProtocol
