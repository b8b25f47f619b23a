#pragma once

#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/ICallableResource.h"

#include <string>

namespace ZuControl::Protocol
{

/// `/controls/:protocol/commands/:command`: the actions that a protocol offers of itself, one of them with its arguments,
/// and its call. Such an action changes no configuration: it stands in no bracket and is told to nobody.
class ZUCONTROL_INTERNAL_API ControlActionResource final : public ControlResourceBase, public ZuRest::ICallableResource
{
public:
    explicit ControlActionResource(IControlManager& usedManager);
    ~ControlActionResource() override;

    ZuRest::ICallableResource* CallableProvider() override;
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// The arguments may stand flat in the body or under "parameters"; where they stand in both, the latter win.
    nlohmann::json Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body) override;

private:
    nlohmann::json ReadAll(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response);
    nlohmann::json ReadOne(ZuRest::RequestInfo const& request, std::string const& command);
    static IControlActionTarget& ActionTarget(IControlInstance& instance);
};

} // namespace ZuControl::Protocol
