#pragma once

#include "ZuScan/ActionInfo.h"
#include "wApi/wExport.h"

#include <memory>
#include <string>
#include <vector>

namespace Zu::Params
{
class Group;
}

namespace ZuScan
{

/// What offers actions by name. Any thread may call, several at once.
class ZUPLATFORM_API IActionTarget
{
public:
    virtual ~IActionTarget(); // first of the slots that others call through: never move one

    virtual std::vector<ActionInfo> ListActions() const = 0;

    /// A fresh group with the arguments of the action at their defaults. Throws -999 for an action that is not offered.
    virtual std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const = 0;

    /// Carries the action out with these arguments and gives its result, which may be null. Throws -999 for an action that is
    /// not offered, and what the action throws.
    virtual std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id,
                                                            std::shared_ptr<Zu::Params::Group> params) = 0;
};

} // namespace ZuScan
