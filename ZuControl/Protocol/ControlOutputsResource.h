#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/ICallableResource.h"
#include "ZuRest/IPreviewResource.h"

#include <map>
#include <string>

namespace ZuControl::Protocol
{

/// `/controls/:protocol/outputs`: the output map of a protocol. Read-only: clients change the map through its commands.
class ZUCONTROL_INTERNAL_API ControlOutputsResource final : public ControlResourceBase
{
public:
    explicit ControlOutputsResource(IControlManager& usedManager);
    ~ControlOutputsResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// Throws `Zu::Status::NOT_UPDATABLE`, no text.
    void UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document) override;

private:
    static void LinkActions(IControlInstance const& instance, std::string const& name, ZuRest::ResponseInfo& response);
};

/// `/controls/:protocol/outputs/commands/:command`: the commands that change the output map of a protocol. It notifies
/// each change of a map, also a change that it has not made itself.
class ZUCONTROL_INTERNAL_API ControlOutputsActionResource final : public ControlResourceBase,
                                                                  public ZuRest::ICallableResource,
                                                                  public ZuRest::ISubjectResource
{
public:
    explicit ControlOutputsActionResource(IControlManager& usedManager);
    ~ControlOutputsActionResource() override;

    ZuRest::ICallableResource* CallableProvider() override;
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// The body is the argument record. The protocol and the fan-out take over the map also when the action fails,
    /// since it may have changed the map by then. A failed "addAll" is only a warning in the log: the items that are
    /// added stay.
    nlohmann::json Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body) override;

    /// The path of the map that the commands change.
    std::string SubjectPath(ZuRest::RequestInfo const& request) const override;

    /// Throws `Zu::Status::NOT_SUPPORTED`, no text, where there are no commands.
    static IControlActionTarget& ActionTarget(IControlInstance const& instance);

    /// In a catch block: throws what a client gets for a command that `InvokeAction` has refused.
    [[noreturn]] static void RethrowRefusal();

private:
    using CallbackId = Zu::Event<std::string, bool>::CallbackId;

    static nlohmann::json ReadAll(IControlInstance const& instance, IControlActionTarget const& target,
                                  ZuRest::ResponseInfo& response, std::string const& name);
    static nlohmann::json ReadOne(IControlInstance const& instance, IControlActionTarget const& target,
                                  ZuRest::RequestInfo const& request, std::string const& command);
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
