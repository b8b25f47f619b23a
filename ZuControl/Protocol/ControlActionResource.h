#pragma once

#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/ICallableResource.h"

#include <string>

namespace ZuControl::Protocol
{

/// `/controls/:protocol/commands/:command`: the protocol's own actions, one action with its arguments, and its call.
/// Such an action changes no configuration: it opens no bracket of the update gate and sends no notification.
class ZUCONTROL_INTERNAL_API ControlActionResource final : public ControlResourceBase, public ZuRest::ICallableResource
{
public:
    explicit ControlActionResource(IControlManager& usedManager);
    ~ControlActionResource() override;

    ZuRest::ICallableResource* CallableProvider() override;
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// The arguments are members of the body or of its member "parameters"; the latter take precedence.
    nlohmann::json Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body) override;

private:
    nlohmann::json ReadAll(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response);
    nlohmann::json ReadOne(ZuRest::RequestInfo const& request, std::string const& command);
    static IControlActionTarget& ActionTarget(IControlInstance& instance);
};

} // namespace ZuControl::Protocol
