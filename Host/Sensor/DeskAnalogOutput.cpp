#include "Host/Sensor/DeskAnalogOutput.h"

#include "ZuApi/Exception.h"

namespace ZuHost
{

void DeskAnalogOutput::Enable(bool enable)
{
    if (isEnabled && !enable)
    {
        queue.clear();
        driven = MIN_CURRENT;
        heldUntilUsec = 0;
    }
    isEnabled = enable;
}

bool DeskAnalogOutput::IsEnabled() const
{
    return isEnabled;
}

void DeskAnalogOutput::SetControlType(ControlType newType)
{
    if (newType > ControlType::EVENT)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "An analog output has no control type %u", static_cast<unsigned>(newType));
    }
    type = newType;
}

void DeskAnalogOutput::SetControlId(uint32 newId)
{
    id = newId;
}

uint32 DeskAnalogOutput::ControlId() const
{
    return id;
}

void DeskAnalogOutput::Enqueue(double current, uint64 nowUsec)
{
    if (!(current >= MIN_CURRENT && current <= MAX_CURRENT)) // written so that NaN is refused too
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "An analog output cannot drive %g mA", current);
    }
    if (!isEnabled)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "An analog output that is off drives no current");
    }
    if (type != ControlType::COMMAND)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "An analog output that events drive takes no commands");
    }
    Advance(nowUsec);
    if (nowUsec >= heldUntilUsec) // the queue is empty and the present current has been held long enough
    {
        driven = current;
        heldUntilUsec = nowUsec + HOLD_USEC;
        return;
    }
    if (queue.size() >= CAPACITY)
    {
        ZU_THROW(Zu::Status::FULL, "An analog output has too many currents to drive");
    }
    queue.push_back(current);
}

double DeskAnalogOutput::Current(uint64 nowUsec)
{
    Advance(nowUsec);
    return isEnabled ? driven : 0;
}

void DeskAnalogOutput::Advance(uint64 nowUsec)
{
    while (!queue.empty() && nowUsec >= heldUntilUsec)
    {
        driven = queue.front();
        queue.pop_front();
        heldUntilUsec += HOLD_USEC;
    }
}

} // namespace ZuHost
