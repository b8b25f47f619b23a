#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Protocol/ControlResourceBase.h"

#include <map>
#include <string>

namespace ZuControl::Protocol
{

struct ControlProperties;

/// `/controls`, the list of protocols, and `/controls/:protocol`, one of them: its state, its parameters and what belongs to
/// it. It tells of each change of a protocol's parameters, and of the end of a load.
class ZUCONTROL_INTERNAL_API ControlResource final : public ControlResourceBase
{
public:
    explicit ControlResource(IControlManager& usedManager);
    ~ControlResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// Takes over "enabled" and "parameters". What is refused by validation has changed nothing. What fails behind that, a
    /// protocol that does not start for one, leaves the host's update gate open.
    void UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document) override;

    /// Behind the end of a load tells that the whole tree may read differently.
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
