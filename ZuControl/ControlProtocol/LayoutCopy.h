#pragma once

#include "ZuControl/ControlProtocol/EntryRefusal.h"
#include "ZuControl/ControlProtocol/Layout.h"
#include "ZuControl/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace Zu::Params
{
class Group;
}

namespace ZuControl::ControlProtocol
{

class IProtocolRegisterAssembly;

/// A copy of an assembly or an output map on which the actions of its clients run as a preview.
///
/// An action refuses with the exception of the real action, moves entries by the same code, and writes no log line. It
/// makes no block: what only the constructor of a block refuses is not foreseen.
/// Threads: one thread has the copy. Its constructor waits for the lock of the original; nothing else touches it.
class ZUCONTROL_INTERNAL_API LayoutCopy
{
public:
    LayoutCopy();
    virtual ~LayoutCopy();

    LayoutCopy(LayoutCopy const&) = delete;
    LayoutCopy& operator=(LayoutCopy const&) = delete;

    /// A new argument record. Throws for an unknown action as `IControlActionTarget::GetActionParams` does.
    virtual std::shared_ptr<Zu::Params::Group> ActionParams(std::string const& actionId) const = 0;

    /// Throws as `IControlActionTarget::InvokeAction` does. The entries that are changed by then stay changed.
    virtual void InvokeAction(std::string const& actionId, Zu::Params::Group const& params) = 0;

    /// The present entries. The first call, before any action, gives the layout of the original.
    virtual Layout Read() const = 0;

    /// The refusals of single entries since the last call.
    std::vector<EntryRefusal> TakeRefusals();

protected:
    RefusalNotes notes;
};

/// The blocks of an assembly of any class. Waits for its lock. Throws `Zu::Status::NOT_SUPPORTED` for a block of a type
/// that the assembly does not list.
ZUCONTROL_API Layout ReadLayout(IProtocolRegisterAssembly& assembly);

/// The items of an output map's record; the caller holds the lock of the map. Throws `Zu::Status::NOT_SUPPORTED` for a
/// record of another class than those of this library.
ZUCONTROL_INTERNAL_API Layout ReadLayout(Zu::Params::Group const& outputMap);

} // namespace ZuControl::ControlProtocol
