#pragma once

#include "ZuControl/Protocol/MarletOutputProperties.h"
#include "ZuControl/Protocol/OutputResourceBase.h"

namespace ZuControl::Protocol
{

/// `/controls/hardware/:device/marlet/:port`: how a serial output over the link to the sensor is to be driven. Every
/// change is notified.
class ZUCONTROL_INTERNAL_API MarletOutputResource final : public OutputResourceBase
{
public:
    explicit MarletOutputResource(IControlManager& usedManager);
    ~MarletOutputResource() override;

protected:
    CommonControlProps& Record() override ZU_REQUIRES(recordLock);
    bool TakeChange() override ZU_REQUIRES(recordLock);

private:
    /// The members of the record that cause a notification when they change.
    struct Fields
    {
        bool enabled = false;
        uint32 rate = 0;
        int32 format = 0;
        double dataMin = 0;
        double dataMax = 0;
        double delay = 0;

        bool operator==(Fields const&) const = default;
    };

    MarletOutputProperties record ZU_GUARDED_BY(recordLock);
    Fields told ZU_GUARDED_BY(recordLock); // as of the last notification
};

} // namespace ZuControl::Protocol
