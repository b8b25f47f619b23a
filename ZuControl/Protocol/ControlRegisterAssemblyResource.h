#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/ICallableResource.h"
#include "ZuRest/IPreviewResource.h"

#include <map>
#include <string>

namespace ZuControl::ControlProtocol
{
class IProtocolRegisterAssembly;
} // namespace ZuControl::ControlProtocol

namespace ZuControl::Protocol
{

/// `/controls/:protocol/registerAssemblies`, the assemblies of a protocol, and one assembly with its block types and
/// blocks. Read-only: clients change an assembly through its commands.
class ZUCONTROL_INTERNAL_API ControlRegisterAssemblyResource final : public ControlResourceBase
{
public:
    explicit ControlRegisterAssemblyResource(IControlManager& usedManager);
    ~ControlRegisterAssemblyResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    using CallbackId = Zu::Event<std::string, std::string>::CallbackId;

    nlohmann::json ReadAll(ZuRest::ResponseInfo& response, std::string const& name);
    nlohmann::json ReadOne(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response, std::string const& name,
                           std::string const& id);
    static nlohmann::json ReadAssembly(ControlProtocol::IProtocolRegisterAssembly& assembly,
                                       ZuRest::RequestInfo const& request);
    IControlInstance& ResolveToInstanceWithAssemblies(std::string const& name);
    static void ReadSupportedBlocks(ControlProtocol::IProtocolRegisterAssembly& assembly, nlohmann::json& document,
                                    ZuRest::RequestInfo const& request);
    static void ReadAddedBlocks(ControlProtocol::IProtocolRegisterAssembly& assembly, nlohmann::json& document,
                                ZuRest::RequestInfo const& request);
    void AddRegisterAssemblyUpdateEvent();
    void SetupEvents(IControlInstance& instance);
    void RemoveRegisterAssemblyUpdateEvent() noexcept;
    void RegisterAssemblyUpdateEventHandler(std::string protocol, std::string id);

    std::map<std::string, CallbackId> registerAssemblyUpdateEventIds; // by type name
};

/// `/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command`: the commands that change an assembly.
class ZUCONTROL_INTERNAL_API ControlRegisterAssemblyActionResource final : public ControlResourceBase,
                                                                           public ZuRest::ICallableResource,
                                                                           public ZuRest::ISubjectResource
{
public:
    explicit ControlRegisterAssemblyActionResource(IControlManager& usedManager);
    ~ControlRegisterAssemblyActionResource() override;

    ZuRest::ICallableResource* CallableProvider() override;
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// The body is the argument record. The protocol and the fan-out take over the assembly only when the action
    /// succeeds; a notification of a possible change is sent in any case.
    nlohmann::json Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body) override;

    /// The path of the assembly that the commands change.
    std::string SubjectPath(ZuRest::RequestInfo const& request) const override;

    /// Throws `Zu::Status::NOT_SUPPORTED`, no text, where there are no commands.
    static IControlActionTarget& ActionTarget(IControlInstance const& instance, std::string const& id);

    /// In a catch block: throws what a client gets for a command that `InvokeAction` has refused.
    [[noreturn]] static void RethrowRefusal();

private:
    static void ParseTokensFromPath(ZuRest::RequestInfo const& request, std::string& name, std::string& id);
    static nlohmann::json ReadAll(IControlInstance const& instance, IControlActionTarget const& target,
                                  ZuRest::ResponseInfo& response, std::string const& name, std::string const& id);
    static nlohmann::json ReadOne(IControlInstance const& instance, IControlActionTarget const& target,
                                  ZuRest::RequestInfo const& request, std::string const& command);
};

} // namespace ZuControl::Protocol
