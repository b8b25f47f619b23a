#pragma once

#include "ZuStdScanners/ZucSensor/SerialOutputControlMode.h"
#include "ZuStdScanners/ZucSensor/SerialOutputControlType.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuHost
{

/// A serial output of the sensor on the desk: what it is set to, and what has been sent. One thread at a time.
class DeskSerialOutput final
{
public:
    using ControlMode = ZuStdScanners::ZucSensor::SerialOutputControlMode;
    using ControlType = ZuStdScanners::ZucSensor::SerialOutputControlType;

    static constexpr uint32 FIRST_BIT_RATE = 115'200;
    static constexpr std::size_t KEPT_BYTES = 4096;

    void Enable(bool enable);
    bool IsEnabled() const;

    /// -997 for what is not 9600, 19200, 38400, 57600 or 115200.
    void SetBitRate(uint32 newBitRate);
    uint32 BitRate() const;

    /// The event that drives it where its type is to be driven by one. The desk has no events: it is only kept.
    void SetControlId(uint32 newId);
    uint32 ControlId() const;

    /// -997 for a mode that there is not.
    void SetMode(ControlMode newMode);
    ControlMode Mode() const;

    /// -997 for a type that there is not.
    void SetControlType(ControlType newType);

    /// Sends `text`. -997 when `size` is not its size, -1000 while it is off or events drive it.
    void Write(uint64 size, std::string const& text);

    /// The last KEPT_BYTES that were sent, and how many there were in all.
    std::string const& Sent() const;
    uint64 SentCount() const;

private:
    bool isEnabled = true;
    uint32 bitRate = FIRST_BIT_RATE;
    uint32 id = 0;
    ControlMode mode = ControlMode::TEXT;
    ControlType type = ControlType::COMMAND;
    std::string sent;
    uint64 sentCount = 0;
};

} // namespace ZuHost
