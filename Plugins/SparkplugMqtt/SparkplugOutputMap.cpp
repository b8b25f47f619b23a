#include "Plugins/SparkplugMqtt/SparkplugOutputMap.h"

#include "Plugins/Common/TextLimits.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Threads/Locker.h"

namespace SparkplugMqtt
{

using ZuControl::ControlProtocol::TextIdStandardOutputItemArgs;

SparkplugOutputMap::SparkplugOutputMap() : TextIdStandardProtocolOutputMap(MOST_OUTPUTS)
{
    SparkplugOutputMap::Clear();
}

SparkplugOutputMap::~SparkplugOutputMap() = default;

void SparkplugOutputMap::Clear()
{
    Zu::Locker const guard(lock); // held across both steps, so that no other thread sees the empty map
    RemoveAll();
    for (char const* name : {"meanZ", "points", "width", "zMax", "zMin"})
    {
        TextIdStandardOutputItemArgs item;
        item.outputId.Set(name);
        item.source.Set(std::string("profile/") + name);
        Add(item);
    }
}

void SparkplugOutputMap::RemoveAll()
{
    TextIdStandardProtocolOutputMap::Clear();
}

SparkplugOutputActions::SparkplugOutputActions(SparkplugOutputMap& changedMap)
    : ProtocolOutputActionTarget(changedMap), map(changedMap)
{
}

SparkplugOutputActions::~SparkplugOutputActions() = default;

std::shared_ptr<Zu::Params::Group> SparkplugOutputActions::InvokeAction(std::string const& actionId,
                                                                        Zu::Params::Group const& params)
{
    CheckArguments(params);
    if (actionId != PROTOCOL_OUTPUT_ACTION_ID_REMOVE_ALL)
    {
        return ProtocolOutputActionTarget::InvokeAction(actionId, params);
    }
    map.RemoveAll();
    return std::make_shared<Zu::Params::Group>("");
}

void SparkplugOutputActions::CheckArguments(Zu::Params::Group const& params) const
{
    PluginCommon::CheckTexts(params);
}

} // namespace SparkplugMqtt
