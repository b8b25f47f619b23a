#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

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
    ZU_LOG_USER_INFO("The action '%1$s' does not exist.", actionId.c_str());
    ZU_THROW(Zu::Status::NOT_FOUND);
}

std::shared_ptr<Zu::Params::Group> ProtocolRegisterAssemblyActionTarget::InvokeAction(std::string const& actionId,
                                                                                      Zu::Params::Group const& params)
{
    if (actionId == REGISTER_ASSEMBLY_ACTION_ID_ADD)
    {
        // The caller's record receives the display names and output ids of its blocks. An argument record is never a
        // constant object; see IControlActionTarget.
        assembly.Add(const_cast<Zu::Params::Group&>(params));
    }
    else if (actionId == REGISTER_ASSEMBLY_ACTION_ID_REMOVE)
    {
        assembly.Remove(params);
    }
    else if (actionId == REGISTER_ASSEMBLY_ACTION_ID_COMPACT)
    {
        assembly.Compact(params);
    }
    else if (actionId == REGISTER_ASSEMBLY_ACTION_ID_UPDATE)
    {
        assembly.Update(params);
    }
    else
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return std::make_shared<Zu::Params::Group>("");
}

} // namespace ZuControl::ControlProtocol
