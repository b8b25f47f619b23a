#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Export.h"
#include "ZuControl/Protocol/ControlResourceBase.h"

#include <string>

namespace ZuControl::Protocol
{

/// The document of one sensor device.
struct ZUCONTROL_INTERNAL_API HardwareProperties final : public Zu::Properties::Structure
{
    HardwareProperties();
    ~HardwareProperties() override;

    Zu::Properties::Value<std::string> label; ///< empty: devices have no names of their own
};

/// `/controls/hardware`, the list of devices, which always has two entries, and `/controls/hardware/:device`, one
/// device with the configuration of its outputs. Read-only.
class ZUCONTROL_INTERNAL_API HardwareControlResource final : public ControlResourceBase
{
public:
    explicit HardwareControlResource(IControlManager& usedManager);
    ~HardwareControlResource() override;

    /// Throws std::out_of_range for a request that has keys but no device.
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    static void ReadAll(ZuRest::ResponseInfo& response);
    nlohmann::json ReadOne(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response);
    static void EmbedOutputs(std::string const& device, ZuRest::ResponseInfo& response);

    HardwareProperties properties; // does not change
};

} // namespace ZuControl::Protocol
