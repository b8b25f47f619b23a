#include "Host/Sensor/DeskDigitalOutput.h"

#include "ZuApi/Exception.h"

namespace ZuHost
{

void DeskDigitalOutput::Clear()
{
    settings = Settings();
}

void DeskDigitalOutput::Enable(bool enable)
{
    isEnabled = enable;
    settings.pulseEndUsec = 0; // switching the output on or off ends a pulse
}

bool DeskDigitalOutput::IsEnabled() const
{
    return isEnabled;
}

void DeskDigitalOutput::SetControlType(ControlType newType)
{
    if (newType > ControlType::EVENT)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A digital output has no control type %u", static_cast<unsigned>(newType));
    }
    settings.type = newType;
}

void DeskDigitalOutput::SetControlId(uint32 newId)
{
    settings.id = newId;
}

uint32 DeskDigitalOutput::ControlId() const
{
    return settings.id;
}

void DeskDigitalOutput::SetExposure(uint64 newExposureUsec)
{
    if (newExposureUsec == 0 || newExposureUsec > MAX_EXPOSURE_USEC)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A pulse cannot last %llu us",
                 static_cast<unsigned long long>(newExposureUsec));
    }
    settings.exposureUsec = newExposureUsec;
}

void DeskDigitalOutput::SetPolarity(bool newIsActiveHigh)
{
    settings.isActiveHigh = newIsActiveHigh;
}

void DeskDigitalOutput::SetState(bool newState)
{
    RequireCommands();
    settings.state = newState;
}

void DeskDigitalOutput::Trigger(uint64 nowUsec)
{
    RequireCommands();
    if (!isEnabled)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "A digital output that is off gives no pulse");
    }
    settings.pulseEndUsec = nowUsec + settings.exposureUsec;
    ++pulseCount;
    lastPulseUsec = nowUsec;
}

bool DeskDigitalOutput::Level(uint64 nowUsec) const
{
    if (!isEnabled)
    {
        return false;
    }
    bool const isActive = settings.state || nowUsec < settings.pulseEndUsec;
    return isActive == settings.isActiveHigh;
}

uint64 DeskDigitalOutput::PulseCount() const
{
    return pulseCount;
}

uint64 DeskDigitalOutput::LastPulseUsec() const
{
    return lastPulseUsec;
}

void DeskDigitalOutput::RequireCommands() const
{
    if (settings.type != ControlType::COMMAND)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "A digital output that events drive takes no commands");
    }
}

} // namespace ZuHost
