#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Protocol/ControlResourceBase.h"

#include <map>
#include <string>

namespace ZuControl::Protocol
{

struct ControlProperties;

/// `/controls`, the list of protocols, and `/controls/:protocol`, one protocol: its state, its parameters, and links to
/// its outputs, assemblies and commands. It notifies each change of a protocol's parameters, and the end of a load.
class ZUCONTROL_INTERNAL_API ControlResource final : public ControlResourceBase
{
public:
    explicit ControlResource(IControlManager& usedManager);
    ~ControlResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// Takes over "enabled" and "parameters". A document that the validation refuses changes nothing. A failure after
    /// the validation, for example of the protocol's start, leaves the bracket of the host's update gate open.
    void UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document) override;

    /// At the end of a load also notifies that the whole tree may have changed.
    void OnPersistenceLoadEvent(IControlManager::PersistenceLoadOpState state) override;

private:
    using CallbackId = Zu::Event<std::string, bool>::CallbackId;

    nlohmann::json ReadAll(ZuRest::ResponseInfo& response);
    nlohmann::json ReadOne(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response, std::string const& name);
    static void LinkActions(IControlInstance& instance, std::string const& name, ZuRest::ResponseInfo& response);
    void RegisterParamUpdateEvent();
    void SetupParamUpdateEvents(IControlInstance& instance);
    void RemoveParamUpdateEvent();
    void ParamUpdateEventHandler(std::string name, bool notify);

    std::map<std::string, CallbackId> paramUpdateEventIds; // by type name
};

} // namespace ZuControl::Protocol
