#pragma once

#include "ZuStdScanners/ZucSensor/AnalogOutputControlType.h"
#include "wApi/wTypes.h"

#include <deque>

namespace ZuHost
{

/// An analog output of the sensor on the desk: a current loop with a queue of currents to come, each of which it drives for
/// HOLD_USEC at least. One thread at a time. Times are those of one clock, in microseconds; currents are milliamperes.
class DeskAnalogOutput final
{
public:
    using ControlType = ZuStdScanners::ZucSensor::AnalogOutputControlType;

    static constexpr double MIN_CURRENT = 4;
    static constexpr double MAX_CURRENT = 20;
    static constexpr uint64 HOLD_USEC = 10'000;
    static constexpr std::size_t CAPACITY = 16; ///< of the queue

    /// Off, it drives nothing, and the queue is empty when it is on again.
    void Enable(bool enable);
    bool IsEnabled() const;

    /// -997 for a type that there is not.
    void SetControlType(ControlType newType);

    /// The event that drives it where its type is to be driven by one. The desk has no events: it is only kept.
    void SetControlId(uint32 newId);
    uint32 ControlId() const;

    /// Puts a current behind the others, or drives it at once when the present one has had its time. -997 out of range, -1000
    /// while it is off or events drive it, -977 while the queue is full.
    void Enqueue(double current, uint64 nowUsec);

    /// What it drives: MIN_CURRENT until there was a first one, 0 while it is off.
    double Current(uint64 nowUsec);

private:
    void Advance(uint64 nowUsec);

    bool isEnabled = true;
    ControlType type = ControlType::COMMAND;
    uint32 id = 0;
    double driven = MIN_CURRENT;
    uint64 heldUntilUsec = 0;
    std::deque<double> queue; // what comes next
};

} // namespace ZuHost
