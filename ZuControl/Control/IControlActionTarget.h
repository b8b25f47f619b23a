#pragma once

#include "ZuControl/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace Zu::Params
{
class Group;
} // namespace Zu::Params

namespace ZuControl
{

/// Names one action of an action target.
class ZUCONTROL_API ControlActionInfo
{
public:
    /// `id` names the action for callers, `displayName` names it for a person.
    ControlActionInfo(char const* id, char const* displayName);
    ControlActionInfo(ControlActionInfo const&);
    ControlActionInfo(ControlActionInfo&&) noexcept;
    ControlActionInfo& operator=(ControlActionInfo const&);
    ControlActionInfo& operator=(ControlActionInfo&&) noexcept;
    ~ControlActionInfo();

    std::string const& Id() const;
    std::string const& DisplayName() const;

private:
    std::string id;
    std::string displayName;
};

/// Offers named actions, each with an argument record of its own: the actions of a protocol, of an output map or of a
/// register assembly.
///
/// Ownership: the protocol owns the target, which lives as long as the protocol. Threads: the workers of the REST
/// service, the host's threads that load jobs, and the worker of ControlProtocolOperations; whether the protocol is
/// enabled or not. The first two operations may run beside each other and must not block. Exceptions: a `Zu::Exception`
/// and an exception of the JSON library reach the client as a refusal or fail the job load; any other one does so too
/// and counts as a fault of the protocol.
class ZUCONTROL_API IControlActionTarget
{
public:
    IControlActionTarget() noexcept;
    virtual ~IControlActionTarget(); // first of the slots that plug-ins call through: never move one

    /// The actions in the order in which clients show them.
    virtual std::vector<ControlActionInfo> ListActions() const = 0;

    /// A new argument record for the action, everything at its default. The caller owns it and fills it. Throws
    /// `Zu::Status::NOT_FOUND` for an action that does not exist. Null makes the request fail with
    /// `Zu::Status::NOT_SUPPORTED`; so does the part of a job load that uses the action "add".
    virtual std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const = 0;

    /// Carries out the action. One client's action of a protocol runs at a time; the client waits, so that an action
    /// may block but should not for long. An action of an output map or of an assembly runs inside the host's update
    /// gate and without the lock of the map or assembly.
    ///
    /// `args` is the caller's record, made by `GetActionParams`; a job load calls "removeAll" of an output map with an
    /// empty group. The values come from the client without validation: check them. `args` is never a constant object,
    /// so that an action may write into it, for example the ids that it has assigned. Returns the result, or null for
    /// none; the caller shares it. Throws `Zu::Status::NOT_FOUND` for an action that does not exist. Changes that an
    /// action makes before it throws may stay.
    virtual std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const& args) = 0;
};

} // namespace ZuControl
