#pragma once

#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{

class IProtocolRegisterAssembly;
class LayoutCopy;

/// The actions by which clients change a register assembly.
///
/// Threads: any; the assembly has a lock of its own.
class ZUCONTROL_API ProtocolRegisterAssemblyActionTarget : public IControlActionTarget
{
public:
    static constexpr char const* REGISTER_ASSEMBLY_ACTION_ID_ADD = "add";
    static constexpr char const* REGISTER_ASSEMBLY_ACTION_ID_REMOVE = "remove";
    static constexpr char const* REGISTER_ASSEMBLY_ACTION_ID_COMPACT = "compact";
    static constexpr char const* REGISTER_ASSEMBLY_ACTION_ID_UPDATE = "update";

    /// `changedAssembly` outlives the target.
    explicit ProtocolRegisterAssemblyActionTarget(IProtocolRegisterAssembly& changedAssembly);
    ~ProtocolRegisterAssemblyActionTarget() override;

    ProtocolRegisterAssemblyActionTarget(ProtocolRegisterAssemblyActionTarget const&) = delete;
    ProtocolRegisterAssemblyActionTarget& operator=(ProtocolRegisterAssemblyActionTarget const&) = delete;

    std::vector<ControlActionInfo> ListActions() const override;

    /// Writes a log line and throws `Zu::Status::NOT_FOUND`, no text, for an action that does not exist.
    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& actionId) const override;

    /// Returns an empty group: an action succeeds or throws. "add" fills display names and output ids into `params`,
    /// which must not be a constant object. Throws `Zu::Status::NOT_FOUND`, no text, for an action that does not exist,
    /// std::bad_cast for a record of another class, and the exceptions of the assembly.
    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& actionId,
                                                    Zu::Params::Group const& params) override;

    /// A copy of the assembly on which actions run as a preview; null for an assembly that is no
    /// ProtocolRegisterAssemblyBase. Waits for the assembly's lock.
    std::unique_ptr<LayoutCopy> CopyForPreview() const;

    /// The argument record of an action; null for an unknown one.
    static std::shared_ptr<Zu::Params::Group> MakeParams(std::string const& actionId);

private:
    IProtocolRegisterAssembly& assembly;
};

} // namespace ZuControl::ControlProtocol
