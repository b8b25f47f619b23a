#pragma once

#include "ZuControl/Protocol/DigitalOutputProperties.h"
#include "ZuControl/Protocol/OutputResourceBase.h"

namespace ZuControl::Protocol
{

/// `/controls/hardware/:device/digital/:port`: how a digital output is to be driven. A change of "standardOutputs"
/// alone is not notified.
class ZUCONTROL_INTERNAL_API DigitalOutputResource final : public OutputResourceBase
{
public:
    explicit DigitalOutputResource(IControlManager& usedManager);
    ~DigitalOutputResource() override;

protected:
    CommonControlProps& Record() override ZU_REQUIRES(recordLock);
    bool TakeChange() override ZU_REQUIRES(recordLock);

private:
    /// The members of the record that cause a notification when they change.
    struct Fields
    {
        bool enabled = false;
        int32 signalEvent = 0;
        int32 signalType = 0;
        bool scheduleEnabled = false;
        uint32 pulseWidth = 0;
        int32 passMode = 0;
        double delay = 0;
        int32 delayDomain = 0;
        bool inverted = false;

        bool operator==(Fields const&) const = default;
    };

    DigitalOutputProperties record ZU_GUARDED_BY(recordLock);
    Fields told ZU_GUARDED_BY(recordLock); // as of the last notification
};

} // namespace ZuControl::Protocol
