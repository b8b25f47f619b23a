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

/// An object that offers actions by name. Any thread may call; several threads may call at the same time.
class ZUPLATFORM_API IActionTarget
{
public:
    virtual ~IActionTarget(); // slot order is part of the interface: append only

    virtual std::vector<ActionInfo> ListActions() const = 0;

    /// Returns a new group with the arguments of the action at their defaults. Throws `Zu::Status::NOT_FOUND` for an
    /// unknown action.
    virtual std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const = 0;

    /// Runs the action with these arguments and returns its result, which may be null. Throws `Zu::Status::NOT_FOUND`
    /// for an unknown action, and passes on exceptions of the action.
    virtual std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id,
                                                            std::shared_ptr<Zu::Params::Group> params) = 0;
};

} // namespace ZuScan
