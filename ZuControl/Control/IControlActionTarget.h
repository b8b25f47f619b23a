#pragma once

#include "ZuControl/Control/ControlActionInfo.h"
#include "ZuControl/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace Zu::Params
{
class Group;
}

namespace ZuControl
{

/// Something that offers named actions, each with an argument record of its own.
class ZUCONTROL_API IControlActionTarget
{
public:
    IControlActionTarget() noexcept;
    virtual ~IControlActionTarget(); // first of the slots that plug-ins call through: never move one

    virtual std::vector<ControlActionInfo> ListActions() const = 0;

    /// A fresh argument record for the action, everything at its default.
    virtual std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const = 0;

    /// Carries the action out and gives its result, which may be empty. `args` is the caller's record, made by
    /// `GetActionParams` and never a constant object: an action may write into it what it handed out, ids for example.
    virtual std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const& args) = 0;
};

} // namespace ZuControl
