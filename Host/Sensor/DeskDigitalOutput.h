#pragma once

#include "ZuStdScanners/ZucSensor/DigitalRecords.h"
#include "wApi/wTypes.h"

namespace ZuHost
{

/// A simulated digital output: its settings, and the level of its pin. One thread at a time.
///
/// While the output is on, its pin is active if the state is set or a pulse runs; the polarity maps active to high or
/// low. While it is off, the pin is low. Times are microseconds of one clock.
class DeskDigitalOutput final
{
public:
    using ControlType = ZuStdScanners::ZucSensor::DigitalOutputControlType;

    static constexpr uint64 FIRST_EXPOSURE_USEC = 10'000;
    static constexpr uint64 MAX_EXPOSURE_USEC = 10'000'000;

    /// Restores the initial settings and ends a pulse. The output stays on or off.
    void Clear();

    void Enable(bool enable);
    bool IsEnabled() const;

    /// Throws `Zu::Status::BAD_ARGUMENT` for an unknown type.
    void SetControlType(ControlType newType);

    /// Sets the event that drives the output if its control type asks for one. The simulated sensor has no events: the
    /// id is only stored.
    void SetControlId(uint32 newId);
    uint32 ControlId() const;

    /// Sets the duration of the following pulses. Throws `Zu::Status::BAD_ARGUMENT` for 0 and above MAX_EXPOSURE_USEC.
    void SetExposure(uint64 newExposureUsec);

    void SetPolarity(bool newIsActiveHigh);

    /// Throws `Zu::Status::WRONG_STATE` while events drive the output.
    void SetState(bool newState);

    /// Begins a pulse and ends a running one. Throws `Zu::Status::WRONG_STATE` while the output is off or driven by
    /// events.
    void Trigger(uint64 nowUsec);

    /// Whether the pin is high.
    bool Level(uint64 nowUsec) const;

    uint64 PulseCount() const;    ///< since the object was made
    uint64 LastPulseUsec() const; ///< the begin of the newest pulse

private:
    /// The settings that `Clear` restores.
    struct Settings
    {
        ControlType type = ControlType::COMMAND;
        uint32 id = 0;
        uint64 exposureUsec = FIRST_EXPOSURE_USEC;
        bool isActiveHigh = true;
        bool state = false;
        uint64 pulseEndUsec = 0;
    };

    void RequireCommands() const;

    bool isEnabled = true;
    Settings settings;
    uint64 pulseCount = 0;
    uint64 lastPulseUsec = 0;
};

} // namespace ZuHost
