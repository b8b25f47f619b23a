#include "Host/Sensor/DeskSerialOutput.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <array>

namespace ZuHost
{

namespace
{

constexpr std::array<uint32, 5> BIT_RATES{9600, 19'200, 38'400, 57'600, DeskSerialOutput::FIRST_BIT_RATE};

} // namespace

void DeskSerialOutput::Enable(bool enable)
{
    isEnabled = enable;
}

bool DeskSerialOutput::IsEnabled() const
{
    return isEnabled;
}

void DeskSerialOutput::SetBitRate(uint32 newBitRate)
{
    if (std::find(BIT_RATES.begin(), BIT_RATES.end(), newBitRate) == BIT_RATES.end())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A serial output cannot send %u bits per second", newBitRate);
    }
    bitRate = newBitRate;
}

uint32 DeskSerialOutput::BitRate() const
{
    return bitRate;
}

void DeskSerialOutput::SetControlId(uint32 newId)
{
    id = newId;
}

uint32 DeskSerialOutput::ControlId() const
{
    return id;
}

void DeskSerialOutput::SetMode(ControlMode newMode)
{
    if (newMode > ControlMode::BINARY)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A serial output has no mode %u", static_cast<unsigned>(newMode));
    }
    mode = newMode;
}

DeskSerialOutput::ControlMode DeskSerialOutput::Mode() const
{
    return mode;
}

void DeskSerialOutput::SetControlType(ControlType newType)
{
    if (newType > ControlType::EVENT)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A serial output has no control type %u", static_cast<unsigned>(newType));
    }
    type = newType;
}

void DeskSerialOutput::Write(uint64 size, std::string const& text)
{
    if (size != text.size())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A serial output was given %zu bytes and told to send %llu", text.size(),
                 static_cast<unsigned long long>(size));
    }
    if (!isEnabled)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "A serial output that is off sends nothing");
    }
    if (type != ControlType::COMMAND)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "A serial output that events drive takes no commands");
    }
    sentCount += size;
    sent += text;
    if (sent.size() > KEPT_BYTES)
    {
        sent.erase(0, sent.size() - KEPT_BYTES);
    }
}

std::string const& DeskSerialOutput::Sent() const
{
    return sent;
}

uint64 DeskSerialOutput::SentCount() const
{
    return sentCount;
}

} // namespace ZuHost
