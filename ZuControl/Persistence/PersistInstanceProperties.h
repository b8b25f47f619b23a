#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Export.h"

namespace ZuControl
{

/// The members of a configuration document that concern the instance, beside the settings of its protocol.
struct ZUCONTROL_INTERNAL_API PersistInstanceProperties final : public Zu::Properties::Structure
{
    PersistInstanceProperties();
    ~PersistInstanceProperties() override;

    Zu::Properties::Value<bool> enabled; ///< whether the protocol runs
};

} // namespace ZuControl
