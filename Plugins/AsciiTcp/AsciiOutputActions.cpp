#include "Plugins/AsciiTcp/AsciiOutputActions.h"

#include "Plugins/AsciiTcp/AsciiOutputMap.h"
#include "ZuApi/Params/Group.h"

namespace AsciiTcp
{

AsciiOutputActions::AsciiOutputActions(AsciiOutputMap& changedMap)
    : ProtocolOutputActionTarget(changedMap), map(changedMap)
{
}

AsciiOutputActions::~AsciiOutputActions() = default;

std::shared_ptr<Zu::Params::Group> AsciiOutputActions::InvokeAction(std::string const& actionId,
                                                                    Zu::Params::Group const& params)
{
    if (actionId != PROTOCOL_OUTPUT_ACTION_ID_REMOVE_ALL)
    {
        return ProtocolOutputActionTarget::InvokeAction(actionId, params);
    }
    map.RemoveAll();
    return std::make_shared<Zu::Params::Group>("");
}

} // namespace AsciiTcp
