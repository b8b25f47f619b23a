#pragma once

#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuControl/Protocol/HardwareProperties.h"

#include <string>

namespace ZuControl::Protocol
{

/// `/controls/hardware`, the list of devices, which always has two, and `/controls/hardware/:device`, one of them with the
/// configuration of its outputs. It only reads.
class ZUCONTROL_INTERNAL_API HardwareControlResource final : public ControlResourceBase
{
public:
    explicit HardwareControlResource(IControlManager& usedManager);
    ~HardwareControlResource() override;

    /// std::out_of_range for a request with keys and no device among them.
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    static void ReadAll(ZuRest::ResponseInfo& response);
    nlohmann::json ReadOne(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response);
    static void EmbedOutputs(std::string const& device, ZuRest::ResponseInfo& response);

    HardwareProperties properties; // never changes
};

} // namespace ZuControl::Protocol
