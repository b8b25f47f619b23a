#include "Plugins/SparkplugMqtt/PasswordCommand.h"

#include "ZuApi/Exception.h"

#include <utility>

namespace SparkplugMqtt
{

namespace
{

void RequireKnown(std::string const& id)
{
    if (id != PasswordCommand::SET_PASSWORD)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
}

} // namespace

PasswordParams::PasswordParams() : Group("")
{
    Register("password", "Password", password);
}

PasswordParams::~PasswordParams()
{
    Deregister("password"); // before the member, to which the base class refers, is destroyed
}

PasswordCommand::PasswordCommand(std::function<void(std::string const&)> newKeep) : keep(std::move(newKeep))
{
}

PasswordCommand::~PasswordCommand() = default;

std::vector<ZuControl::ControlActionInfo> PasswordCommand::ListActions() const
{
    return {{SET_PASSWORD, "Set Password"}};
}

std::shared_ptr<Zu::Params::Group> PasswordCommand::GetActionParams(std::string const& id) const
{
    RequireKnown(id);
    return std::make_shared<PasswordParams>();
}

std::shared_ptr<Zu::Params::Group> PasswordCommand::InvokeAction(std::string const& id, Zu::Params::Group const& args)
{
    RequireKnown(id);
    PluginCommon::CheckTexts(args);
    keep(dynamic_cast<PasswordParams const&>(args).password.Get());
    return nullptr; // there is no result
}

} // namespace SparkplugMqtt
