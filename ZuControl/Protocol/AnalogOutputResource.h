#pragma once

#include "ZuControl/Protocol/AnalogOutputProperties.h"
#include "ZuControl/Protocol/OutputResourceBase.h"

namespace ZuControl::Protocol
{

/// `/controls/hardware/:device/analog/:port`: how an analog output is to be driven. Every change is notified.
class ZUCONTROL_INTERNAL_API AnalogOutputResource final : public OutputResourceBase
{
public:
    explicit AnalogOutputResource(IControlManager& usedManager);
    ~AnalogOutputResource() override;

protected:
    CommonControlProps& Record() override ZU_REQUIRES(recordLock);
    bool TakeChange() override ZU_REQUIRES(recordLock);

private:
    /// The members of the record that cause a notification when they change.
    struct Fields
    {
        bool enabled = false;
        int32 signalEvent = 0;
        bool scheduleEnabled = false;
        double currentMin = 0;
        double currentMax = 0;
        bool invalidEnabled = false;
        double currentInvalid = 0;
        double dataScaleMin = 0;
        double dataScaleMax = 0;
        double delay = 0;
        int32 delayDomain = 0;

        bool operator==(Fields const&) const = default;
    };

    AnalogOutputProperties record ZU_GUARDED_BY(recordLock);
    Fields told ZU_GUARDED_BY(recordLock); // as of the last notification
};

} // namespace ZuControl::Protocol
