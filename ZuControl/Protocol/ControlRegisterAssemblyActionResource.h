#pragma once

#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/ICallableResource.h"

#include <string>

namespace ZuControl::Protocol
{

/// `/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command`: the commands that change an assembly.
class ZUCONTROL_INTERNAL_API ControlRegisterAssemblyActionResource final : public ControlResourceBase,
                                                                           public ZuRest::ICallableResource
{
public:
    explicit ControlRegisterAssemblyActionResource(IControlManager& usedManager);
    ~ControlRegisterAssemblyActionResource() override;

    ZuRest::ICallableResource* CallableProvider() override;
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// The body is the argument record. The protocol and the fan-out take over the assembly only when the action
    /// succeeds; a notification of a possible change is sent in any case.
    nlohmann::json Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body) override;

private:
    static void ParseTokensFromPath(ZuRest::RequestInfo const& request, std::string& name, std::string& id);
    static IControlActionTarget& ActionTarget(IControlInstance const& instance, std::string const& id);
    static nlohmann::json ReadAll(IControlInstance const& instance, IControlActionTarget const& target,
                                  ZuRest::ResponseInfo& response, std::string const& name, std::string const& id);
    static nlohmann::json ReadOne(IControlInstance const& instance, IControlActionTarget const& target,
                                  ZuRest::RequestInfo const& request, std::string const& command);
};

} // namespace ZuControl::Protocol
