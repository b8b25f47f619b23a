#pragma once

#include "Plugins/Common/TextLimits.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{
class IProtocolRegisterAssembly;
} // namespace ZuControl::ControlProtocol

namespace ModbusTcp
{

struct OrderFinding;

/// The arguments of the command: what a master shows of an OrderTest block.
struct OrderTestParams final : public Zu::Params::Group
{
    static constexpr uint32 MOST_BYTES = 256;

    OrderTestParams();
    ~OrderTestParams() override;

    Zu::Params::Value<uint32> address; ///< as the master counts
    PluginCommon::LimitedText type{MOST_BYTES};
    PluginCommon::LimitedText shown{MOST_BYTES};
};

/// The answer of the command.
struct OrderTestResult final : public Zu::Params::Group
{
    explicit OrderTestResult(OrderFinding const& finding);
    ~OrderTestResult() override;

    Zu::Params::Value<bool> isRight;
    Zu::Params::Value<std::string> masterOrder; ///< empty if the values do not tell
    Zu::Params::Value<std::string> answer;
};

/// The command by which a person finds out how a master orders bytes. It changes nothing.
class OrderTestCommand final : public ZuControl::IControlActionTarget
{
public:
    static constexpr char const* ORDER_TEST = "orderTest";

    /// `usedAssembly` outlives the command.
    explicit OrderTestCommand(ZuControl::ControlProtocol::IProtocolRegisterAssembly& usedAssembly);
    ~OrderTestCommand() override;
    OrderTestCommand(OrderTestCommand const&) = delete;
    OrderTestCommand& operator=(OrderTestCommand const&) = delete;

    std::vector<ZuControl::ControlActionInfo> ListActions() const override;

    /// Throws `Zu::Status::NOT_FOUND` for an unknown command.
    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const override;

    /// Returns an OrderTestResult. Throws `Zu::Status::NOT_FOUND` for an unknown command, and as `Diagnose` does;
    /// `Zu::Status::BAD_ARGUMENT` for a text that is too long.
    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const& args) override;

private:
    ZuControl::ControlProtocol::IProtocolRegisterAssembly& assembly;
};

} // namespace ModbusTcp
