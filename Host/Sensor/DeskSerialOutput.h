#pragma once

#include "ZuStdScanners/ZucSensor/SerialOutputRecords.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuHost
{

/// A simulated serial output: its settings, and the text that was sent. One thread at a time.
class DeskSerialOutput final
{
public:
    using ControlMode = ZuStdScanners::ZucSensor::SerialOutputControlMode;
    using ControlType = ZuStdScanners::ZucSensor::SerialOutputControlType;

    static constexpr uint32 FIRST_BIT_RATE = 115'200;
    static constexpr std::size_t KEPT_BYTES = 4096;

    void Enable(bool enable);
    bool IsEnabled() const;

    /// Throws `Zu::Status::BAD_ARGUMENT` unless the rate is 9600, 19200, 38400, 57600 or 115200.
    void SetBitRate(uint32 newBitRate);
    uint32 BitRate() const;

    /// Sets the event that drives the output if its control type asks for one. The simulated sensor has no events: the
    /// id is only stored.
    void SetControlId(uint32 newId);
    uint32 ControlId() const;

    /// Throws `Zu::Status::BAD_ARGUMENT` for an unknown mode.
    void SetMode(ControlMode newMode);
    ControlMode Mode() const;

    /// Throws `Zu::Status::BAD_ARGUMENT` for an unknown type.
    void SetControlType(ControlType newType);

    /// Sends `text`. Throws `Zu::Status::BAD_ARGUMENT` if `size` is not its size, and `Zu::Status::WRONG_STATE` while
    /// the output is off or driven by events.
    void Write(uint64 size, std::string const& text);

    /// The last KEPT_BYTES bytes that were sent, and the number of all bytes sent.
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
