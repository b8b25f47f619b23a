#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl::Protocol
{

/// A data source that an output sends, and its output id.
struct ZUCONTROL_INTERNAL_API StandardOutput final : public Zu::Properties::Structure
{
    StandardOutput();
    ~StandardOutput() override;

    Zu::Properties::Value<std::string> source;
    Zu::Properties::Value<uint32> outputId;
};

} // namespace ZuControl::Protocol
