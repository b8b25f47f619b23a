#pragma once

#include "ZuApi/Event.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Zu::Params
{
class Group;
}

namespace ZuScan
{

/// The result of an alignment.
enum class AlignCompletionStatus : int32
{
    SUCCESS = 0,
    FAILED = 1,
    CANCELLED = 2
};

/// The alignment state of a scanner.
enum class AlignState : uint32
{
    NOT_ALIGNED = 0,
    ALIGNING = 1,
    ALIGNED = 2
};

/// One action that a scanner or a sensor offers.
class ActionInfo final
{
public:
    ActionInfo() = default;

    explicit ActionInfo(std::string actionId) : id(std::move(actionId))
    {
    }

    /// The name under which the action is called.
    std::string const& Id() const noexcept
    {
        return id;
    }

private:
    std::string id;
};

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

/// An object that takes commands by name. Commands are actions that change the state of a scanner or a sensor.
class ZUPLATFORM_API ICommandTarget : public IActionTarget
{
public:
    ~ICommandTarget() override;
};

/// One sensor of a scanner. Any thread may call; several threads may call at the same time.
class ZUPLATFORM_API ISensor
{
public:
    virtual ~ISensor();

    /// Returns null if the sensor takes no commands. The sensor owns the target.
    virtual ICommandTarget* CommandTarget() = 0;
};

/// One scanner. Any thread may call; several threads may call at the same time.
class ZUPLATFORM_API IScanner
{
public:
    virtual ~IScanner();

    /// Returns null if the scanner offers no actions. The scanner owns the target.
    virtual IActionTarget* ActionTarget() = 0;

    /// Fires once at the end of each alignment, on a thread of the scanner. The scanner owns the event.
    virtual Zu::Event<AlignCompletionStatus>& AlignmentCompletedEvent() = 0;

    virtual AlignState GetAlignState() = 0;
};

} // namespace ZuScan
