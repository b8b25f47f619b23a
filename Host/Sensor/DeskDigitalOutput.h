#pragma once

#include "ZuStdScanners/ZucSensor/DigitalOutputControlType.h"
#include "wApi/wTypes.h"

namespace ZuHost
{

/// A digital output of the sensor on the desk: what it is set to, and the level that follows for its pin. One thread at a time.
///
/// While the output is on, its pin is active when the state is set or a pulse runs, and the polarity says which level that is;
/// while it is off, nothing drives the pin and it is low. Times are those of one clock, in microseconds.
class DeskDigitalOutput final
{
public:
    using ControlType = ZuStdScanners::ZucSensor::DigitalOutputControlType;

    static constexpr uint64 FIRST_EXPOSURE_USEC = 10'000;
    static constexpr uint64 MAX_EXPOSURE_USEC = 10'000'000;

    /// Back to the settings that it begins with; a pulse ends. It stays on or off.
    void Clear();

    void Enable(bool enable);
    bool IsEnabled() const;

    /// -997 for a type that there is not.
    void SetControlType(ControlType newType);

    /// The event that drives it where its type is to be driven by one. The desk has no events: it is only kept.
    void SetControlId(uint32 newId);
    uint32 ControlId() const;

    /// How long the pulses to come last; -997 for 0 and above MAX_EXPOSURE_USEC.
    void SetExposure(uint64 newExposureUsec);

    void SetPolarity(bool newIsActiveHigh);

    /// -1000 while events drive it.
    void SetState(bool newState);

    /// Begins a pulse; one that runs gives way. -1000 while it is off or events drive it.
    void Trigger(uint64 nowUsec);

    /// Whether the pin is high.
    bool Level(uint64 nowUsec) const;

private:
    /// What `Clear` sets back.
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
};

} // namespace ZuHost
