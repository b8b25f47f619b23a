#pragma once

#include "ZuControl/Export.h"

namespace Zu::Params
{
class Group;
}

namespace ZuControl
{

/// An action target that derives from one of the targets of this library declares with this interface, as an additional
/// base, that clients can preview its actions: they change the map or the assembly as the actions of its base do, after
/// this check.
class ZUCONTROL_API IPreviewedActions
{
public:
    IPreviewedActions() noexcept;

    /// Throws what `InvokeAction` throws for arguments that it refuses itself. Changes nothing and writes no log line.
    virtual void CheckArguments(Zu::Params::Group const& params) const = 0;

    virtual ~IPreviewedActions(); // after the other slot, which keeps its place
};

} // namespace ZuControl
