#pragma once

#include "Plugins/Common/TextLimits.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/IControlActionTarget.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace SparkplugMqtt
{

/// The argument of the command setPassword.
struct PasswordParams final : public Zu::Params::Group
{
public:
    PasswordParams();
    ~PasswordParams() override;

    PluginCommon::LimitedText password{PluginCommon::MOST_TEXT_BYTES}; ///< empty: no password any more
};

/// The command of the service, "setPassword". It is the only way to the password: no document, schema, log line or job
/// shows it.
class PasswordCommand final : public ZuControl::IControlActionTarget
{
public:
    static constexpr char const* SET_PASSWORD = "setPassword";

    /// `newKeep` stores the password. It must be thread-safe.
    explicit PasswordCommand(std::function<void(std::string const&)> newKeep);
    ~PasswordCommand() override;
    PasswordCommand(PasswordCommand const&) = delete;
    PasswordCommand& operator=(PasswordCommand const&) = delete;

    std::vector<ZuControl::ControlActionInfo> ListActions() const override;

    /// Throws `Zu::Status::NOT_FOUND` for an unknown command.
    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const override;

    /// Returns null. Throws `Zu::Status::NOT_FOUND` for an unknown command, and `Zu::Status::BAD_ARGUMENT`
    /// for a password that is too long.
    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const& args) override;

private:
    std::function<void(std::string const&)> const keep;
};

} // namespace SparkplugMqtt
