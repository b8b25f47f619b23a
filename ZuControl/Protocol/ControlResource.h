#pragma once

#include "ZuApi/Event.h"
#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/Export.h"
#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/IUpdatableResource.h"

#include <map>
#include <string>

ZU_DECLARE_ENUM_VALUE(ZuControl::ProtocolStatus);

namespace ZuControl::Protocol
{

/// The document of one protocol. A client can change its member "enabled" and, under "parameters", the protocol's
/// record.
struct ZUCONTROL_INTERNAL_API ControlProperties final : public Zu::Params::Group
{
    ControlProperties();
    ~ControlProperties() override;

    /// Adds the protocol's own record as the last member, "parameters". The record is not owned and outlives this
    /// object. Title and sort order are stored in `parameters` when they differ: the first call stores them, later
    /// calls only read.
    void ShowParameters(Zu::Params::Group& parameters);

    /// Whether `candidate` is one of the states that the schema lists.
    bool KnowsStatus(ProtocolStatus candidate) const;

    Zu::Params::Value<bool> enabled;
    Zu::Params::Enum<ProtocolStatus> status;
    Zu::Params::Value<std::string> id;
    Zu::Params::Value<std::string> displayName;
};

/// `/controls`, the list of protocols, and `/controls/:protocol`, one protocol: its state, its parameters, and links to
/// its outputs, assemblies and commands. It notifies each change of a protocol's parameters, and the end of a load.
class ZUCONTROL_INTERNAL_API ControlResource final : public ControlResourceBase, public ZuRest::IUpdatableResource
{
public:
    explicit ControlResource(IControlManager& usedManager);
    ~ControlResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// Takes over "enabled" and "parameters". A document that the validation refuses changes nothing. A failure after
    /// the validation, for example of the protocol's start, leaves the bracket of the host's update gate open.
    void UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document) override;

    bool IsUpdatable() const noexcept override
    {
        return true;
    }

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
