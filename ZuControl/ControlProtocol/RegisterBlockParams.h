#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// The arguments of one block.
struct ZUCONTROL_API RegisterBlockParams : public Zu::Params::Group
{
    /// Stands for "no output id"; it is above the largest valid id.
    static constexpr uint16 NO_OUTPUT_ID = 65535;

    RegisterBlockParams();
    ~RegisterBlockParams() override;

    Zu::Params::Value<std::string> type;
    Zu::Params::Value<std::string> dataSource;
    Zu::Params::Value<std::string> scannerId;
    Zu::Params::Value<std::string> displayName;
    Zu::Params::Value<uint16> outputId;
};

} // namespace ZuControl::ControlProtocol
