#include "ZuControl/Protocol/ActionProperties.h"

#include "ZuApi/Params/Group.h"

namespace ZuControl::Protocol
{

ActionProperties::ActionProperties(std::string const& actionId, Zu::Params::Group& parameters)
    : Structure(true), id(actionId)
{
    Register("id", id);
    Register("parameters", parameters);
}

ActionProperties::~ActionProperties() = default;

} // namespace ZuControl::Protocol
