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

/// The document of one action: its id and its arguments.
struct ZUCONTROL_INTERNAL_API ActionProperties final : public Zu::Properties::Structure
{
    /// `parameters` is not owned and outlives the document.
    ActionProperties(std::string const& actionId, Zu::Params::Group& parameters);
    ~ActionProperties() override;

    Zu::Properties::Value<std::string> id;
};

/// The actions of output maps and of register assemblies have the same document.
using OutputsActionProperties = ActionProperties;
using RegisterAssemblyActionProperties = ActionProperties;

} // namespace ZuControl::Protocol
