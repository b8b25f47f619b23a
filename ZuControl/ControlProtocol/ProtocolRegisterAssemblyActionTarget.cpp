#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/PlannedAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterRules.h"

namespace ZuControl::ControlProtocol
{

ProtocolRegisterAssemblyActionTarget::ProtocolRegisterAssemblyActionTarget(IProtocolRegisterAssembly& changedAssembly)
    : assembly(changedAssembly)
{
}

ProtocolRegisterAssemblyActionTarget::~ProtocolRegisterAssemblyActionTarget() = default;

std::vector<ControlActionInfo> ProtocolRegisterAssemblyActionTarget::ListActions() const
{
    return {{REGISTER_ASSEMBLY_ACTION_ID_ADD, "Add"},
            {REGISTER_ASSEMBLY_ACTION_ID_REMOVE, "Remove"},
            {REGISTER_ASSEMBLY_ACTION_ID_COMPACT, "Compact"},
            {REGISTER_ASSEMBLY_ACTION_ID_UPDATE, "Update"}};
}

std::shared_ptr<Zu::Params::Group>
ProtocolRegisterAssemblyActionTarget::GetActionParams(std::string const& actionId) const
{
    if (std::shared_ptr<Zu::Params::Group> params = MakeParams(actionId); params != nullptr)
    {
        return params;
    }
    ZU_LOG_USER_INFO("The action '%1$s' does not exist.", actionId.c_str());
    ZU_THROW(Zu::Status::NOT_FOUND);
}

std::shared_ptr<Zu::Params::Group> ProtocolRegisterAssemblyActionTarget::InvokeAction(std::string const& actionId,
                                                                                      Zu::Params::Group const& params)
{
    CallAssemblyAction(assembly, actionId, params);
    return std::make_shared<Zu::Params::Group>("");
}

std::unique_ptr<LayoutCopy> ProtocolRegisterAssemblyActionTarget::CopyForPreview() const
{
    auto const* const ours = dynamic_cast<ProtocolRegisterAssemblyBase const*>(&assembly);
    return ours != nullptr ? std::make_unique<PlannedAssembly>(assembly, this) : nullptr;
}

std::shared_ptr<Zu::Params::Group> ProtocolRegisterAssemblyActionTarget::MakeParams(std::string const& actionId)
{
    if (actionId == REGISTER_ASSEMBLY_ACTION_ID_ADD)
    {
        return std::make_shared<AddBlockParams>();
    }
    if (actionId == REGISTER_ASSEMBLY_ACTION_ID_REMOVE)
    {
        return std::make_shared<RemoveBlockParams>();
    }
    if (actionId == REGISTER_ASSEMBLY_ACTION_ID_UPDATE)
    {
        return std::make_shared<UpdateBlockParams>();
    }
    if (actionId == REGISTER_ASSEMBLY_ACTION_ID_COMPACT)
    {
        return std::make_shared<CompactBlocksParams>();
    }
    return nullptr;
}

} // namespace ZuControl::ControlProtocol
