#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Export.h"

#include <string>

namespace Zu::Params
{
class Group;
}

namespace ZuControl::Protocol
{

/// The document of one action: what it is called and which arguments it takes.
struct ZUCONTROL_INTERNAL_API ActionProperties final : public Zu::Properties::Structure
{
    /// `parameters` is not owned and outlives the document.
    ActionProperties(std::string const& actionId, Zu::Params::Group& parameters);
    ~ActionProperties() override;

    Zu::Properties::Value<std::string> id;
};

/// Those of output maps and of register assemblies look the same.
using OutputsActionProperties = ActionProperties;
using RegisterAssemblyActionProperties = ActionProperties;

} // namespace ZuControl::Protocol
