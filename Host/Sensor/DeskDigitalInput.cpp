#include "Host/Sensor/DeskDigitalInput.h"

#include "ZuApi/Exception.h"

namespace ZuHost
{

namespace
{

uint64 CheckedPin(uint64 pin)
{
    if (pin >= DeskDigitalInput::PIN_COUNT)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A digital input has no pin %llu", static_cast<unsigned long long>(pin));
    }
    return pin;
}

} // namespace

DeskDigitalInput::DeskDigitalInput(uint64 newFirstPin) : firstPin(CheckedPin(newFirstPin)), readPin(firstPin)
{
}

void DeskDigitalInput::Clear()
{
    readPin = firstPin;
    hasEvents = {};
}

void DeskDigitalInput::Enable(bool enable)
{
    isEnabled = enable;
}

bool DeskDigitalInput::IsEnabled() const
{
    return isEnabled;
}

void DeskDigitalInput::SetPin(uint64 newPin)
{
    readPin = CheckedPin(newPin);
}

uint64 DeskDigitalInput::Pin() const
{
    return readPin;
}

void DeskDigitalInput::EnableEvents(uint64 pin, bool enable)
{
    hasEvents[CheckedPin(pin)] = enable;
}

bool DeskDigitalInput::HasEvents(uint64 pin) const
{
    return hasEvents[CheckedPin(pin)];
}

} // namespace ZuHost
