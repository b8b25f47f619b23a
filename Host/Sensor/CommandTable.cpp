#include "Host/Sensor/CommandTable.h"

#include "ZuApi/Exception.h"

namespace ZuHost
{

CommandTable::CommandTable() = default;

CommandTable::~CommandTable() = default;

std::vector<ZuScan::ActionInfo> CommandTable::ListActions() const
{
    std::vector<ZuScan::ActionInfo> list;
    for (Command const& command : commands)
    {
        list.emplace_back(command.id);
    }
    return list;
}

std::shared_ptr<Zu::Params::Group> CommandTable::GetActionParams(std::string const& id) const
{
    return Find(id).makeParams();
}

CommandTable::Result CommandTable::InvokeAction(std::string const& id, std::shared_ptr<Zu::Params::Group> params)
{
    Result result;
    if (!Find(id).invoke(params.get(), result))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The command '%s' takes other arguments", id.c_str());
    }
    return result;
}

void CommandTable::Add(Command command)
{
    commands.push_back(std::move(command));
}

CommandTable::Command const& CommandTable::Find(std::string const& id) const
{
    for (Command const& command : commands)
    {
        if (command.id == id)
        {
            return command;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no command '%s'", id.c_str());
}

} // namespace ZuHost
