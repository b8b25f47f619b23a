#include "Host/Sensor/ActionTable.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"

namespace ZuHost
{

ActionTable::ActionTable(std::initializer_list<std::pair<std::string, Action>> newActions) : actions(newActions)
{
}

ActionTable::~ActionTable() = default;

std::vector<ZuScan::ActionInfo> ActionTable::ListActions() const
{
    std::vector<ZuScan::ActionInfo> list;
    for (auto const& action : actions)
    {
        list.emplace_back(action.first);
    }
    return list;
}

std::shared_ptr<Zu::Params::Group> ActionTable::GetActionParams(std::string const& id) const
{
    Find(id);
    return std::make_shared<Zu::Params::Group>();
}

std::shared_ptr<Zu::Params::Group> ActionTable::InvokeAction(std::string const& id,
                                                             std::shared_ptr<Zu::Params::Group> /*params*/)
{
    return Find(id)();
}

ActionTable::Action const& ActionTable::Find(std::string const& id) const
{
    for (auto const& action : actions)
    {
        if (action.first == id)
        {
            return action.second;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no action '%s'", id.c_str());
}

} // namespace ZuHost
