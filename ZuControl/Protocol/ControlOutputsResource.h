#pragma once

#include "ZuControl/Protocol/ControlResourceBase.h"

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

} // namespace ZuControl::Protocol
