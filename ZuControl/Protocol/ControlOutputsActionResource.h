#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/ICallableResource.h"

#include <map>
#include <string>

namespace ZuControl::Protocol
{

/// `/controls/:protocol/outputs/commands/:command`: how the output map of a protocol is changed. It tells of each change of
/// a map, whoever made it.
class ZUCONTROL_INTERNAL_API ControlOutputsActionResource final : public ControlResourceBase,
                                                                  public ZuRest::ICallableResource
{
public:
    explicit ControlOutputsActionResource(IControlManager& usedManager);
    ~ControlOutputsActionResource() override;

    ZuRest::ICallableResource* CallableProvider() override;
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// The body is the argument record. The fan-out hears of the change also when the action fails, so that what it did
    /// before counts. A failed "addAll" is a warning in the log and nothing else: what could be added stays.
    nlohmann::json Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body) override;

private:
    using CallbackId = Zu::Event<std::string, bool>::CallbackId;

    static nlohmann::json ReadAll(IControlInstance const& instance, IControlActionTarget const& target,
                                  ZuRest::ResponseInfo& response, std::string const& name);
    static nlohmann::json ReadOne(IControlInstance const& instance, IControlActionTarget const& target,
                                  ZuRest::RequestInfo const& request, std::string const& command);
    static IControlActionTarget& ActionTarget(IControlInstance const& instance);
    static bool RunAction(IControlInstance& instance, IControlActionTarget& target, std::string const& command,
                          Zu::Params::Group const& params);
    static void TellOfUpdate(IControlInstance& instance);
    void AddOutputsUpdateEventHandler();
    void SetupEvents(IControlInstance& instance);
    void RemoveOutputsUpdateEventHandler() noexcept;
    void ControlOutputsActionResourceEventHandler(std::string name, bool notify);

    std::map<std::string, CallbackId> outputsUpdateEventIds; // by type name
};

} // namespace ZuControl::Protocol
