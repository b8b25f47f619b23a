#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"
#include "ZuControl/ControlProtocol/OutputMapCopy.h"

namespace ZuControl::ControlProtocol
{

ProtocolOutputActionTarget::ProtocolOutputActionTarget(IProtocolOutput& changedOutput) : output(changedOutput)
{
}

ProtocolOutputActionTarget::~ProtocolOutputActionTarget() = default;

std::vector<ControlActionInfo> ProtocolOutputActionTarget::ListActions() const
{
    return {{PROTOCOL_OUTPUT_ACTION_ID_ADD, "Add"},         {PROTOCOL_OUTPUT_ACTION_ID_ADD_ALL, "AddAll"},
            {PROTOCOL_OUTPUT_ACTION_ID_REMOVE, "Remove"},   {PROTOCOL_OUTPUT_ACTION_ID_REMOVE_ALL, "RemoveAll"},
            {PROTOCOL_OUTPUT_ACTION_ID_COMPACT, "Compact"}, {PROTOCOL_OUTPUT_ACTION_ID_UPDATE, "Update"}};
}

std::shared_ptr<Zu::Params::Group> ProtocolOutputActionTarget::GetActionParams(std::string const& actionId) const
{
    if (actionId == PROTOCOL_OUTPUT_ACTION_ID_ADD || actionId == PROTOCOL_OUTPUT_ACTION_ID_REMOVE)
    {
        return output.CreateOutputMapItemArgs();
    }
    if (actionId == PROTOCOL_OUTPUT_ACTION_ID_ADD_ALL || actionId == PROTOCOL_OUTPUT_ACTION_ID_UPDATE)
    {
        return output.CreateOutputsArgs();
    }
    if (actionId == PROTOCOL_OUTPUT_ACTION_ID_REMOVE_ALL || actionId == PROTOCOL_OUTPUT_ACTION_ID_COMPACT)
    {
        return std::make_shared<Zu::Params::Group>("");
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "The action '%s' does not exist. No parameters available", actionId.c_str());
}

std::shared_ptr<Zu::Params::Group> ProtocolOutputActionTarget::InvokeAction(std::string const& actionId,
                                                                            Zu::Params::Group const& params)
{
    // The caller's record receives the ids that are assigned and the item that is moved. An argument record is never a
    // constant object; see IControlActionTarget.
    auto& changedParams = const_cast<Zu::Params::Group&>(params);
    if (actionId == PROTOCOL_OUTPUT_ACTION_ID_ADD)
    {
        output.Add(params);
    }
    else if (actionId == PROTOCOL_OUTPUT_ACTION_ID_ADD_ALL)
    {
        output.AddAll(changedParams);
    }
    else if (actionId == PROTOCOL_OUTPUT_ACTION_ID_REMOVE)
    {
        output.Remove(params);
    }
    else if (actionId == PROTOCOL_OUTPUT_ACTION_ID_REMOVE_ALL)
    {
        output.Clear();
    }
    else if (actionId == PROTOCOL_OUTPUT_ACTION_ID_COMPACT)
    {
        output.CompactId();
    }
    else if (actionId == PROTOCOL_OUTPUT_ACTION_ID_UPDATE)
    {
        output.UpdateId(changedParams);
    }
    else
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "The action '%s' does not exist. Action ignored.", actionId.c_str());
    }
    return std::make_shared<Zu::Params::Group>("");
}

std::unique_ptr<LayoutCopy> ProtocolOutputActionTarget::CopyForPreview() const
{
    return MakeCopyOf(output);
}

} // namespace ZuControl::ControlProtocol
