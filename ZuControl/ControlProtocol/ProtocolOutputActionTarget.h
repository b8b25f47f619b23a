#pragma once

#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{

class IProtocolOutput;
class LayoutCopy;

/// The actions by which clients change an output map.
///
/// Threads: any; the map has a lock of its own.
class ZUCONTROL_API ProtocolOutputActionTarget : public IControlActionTarget
{
public:
    static constexpr char const* PROTOCOL_OUTPUT_ACTION_ID_ADD = "add";
    static constexpr char const* PROTOCOL_OUTPUT_ACTION_ID_ADD_ALL = "addAll";
    static constexpr char const* PROTOCOL_OUTPUT_ACTION_ID_REMOVE = "remove";
    static constexpr char const* PROTOCOL_OUTPUT_ACTION_ID_REMOVE_ALL = "removeAll";
    static constexpr char const* PROTOCOL_OUTPUT_ACTION_ID_COMPACT = "compactId";
    static constexpr char const* PROTOCOL_OUTPUT_ACTION_ID_UPDATE = "updateId";

    /// `changedOutput` outlives the target.
    explicit ProtocolOutputActionTarget(IProtocolOutput& changedOutput);
    ~ProtocolOutputActionTarget() override;

    ProtocolOutputActionTarget(ProtocolOutputActionTarget const&) = delete;
    ProtocolOutputActionTarget& operator=(ProtocolOutputActionTarget const&) = delete;

    std::vector<ControlActionInfo> ListActions() const override;

    /// Throws `Zu::Status::NOT_FOUND` for an action that does not exist.
    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& actionId) const override;

    /// Returns an empty group: an action succeeds or throws. "addAll" and "updateId" write into `params`, which must
    /// not be a constant object. Throws `Zu::Status::NOT_FOUND` for an action that does not exist, and the exceptions
    /// of the map.
    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& actionId,
                                                    Zu::Params::Group const& params) override;

    /// A copy of the map on which actions run as a preview; null for a map of another class than those of this library.
    /// Waits for the map's lock.
    std::unique_ptr<LayoutCopy> CopyForPreview() const;

private:
    IProtocolOutput& output;
};

} // namespace ZuControl::ControlProtocol
