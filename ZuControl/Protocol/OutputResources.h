#pragma once

#include "ZuControl/Protocol/OutputProperties.h"
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

/// `/controls/hardware/:device/serial/:port`: how a serial output is to be driven. A change of "format" or
/// "standardOutputs" alone is not notified.
class ZUCONTROL_INTERNAL_API SerialOutputResource final : public OutputResourceBase
{
public:
    explicit SerialOutputResource(IControlManager& usedManager);
    ~SerialOutputResource() override;

protected:
    CommonControlProps& Record() override ZU_REQUIRES(recordLock);
    bool TakeChange() override ZU_REQUIRES(recordLock);

private:
    /// The members of the record that cause a notification when they change.
    struct Fields
    {
        bool enabled = false;
        uint32 rate = 0;

        bool operator==(Fields const&) const = default;
    };

    SerialOutputProperties record ZU_GUARDED_BY(recordLock);
    Fields told ZU_GUARDED_BY(recordLock); // as of the last notification
};

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
