#pragma once

#include "ZuStdScanners/ZucSensor/AnalogOutputRecords.h"
#include "wApi/wTypes.h"

#include <deque>

namespace ZuHost
{

/// A simulated analog output: a current loop with a queue of currents. It drives each current for at least HOLD_USEC.
/// One thread at a time. Times are microseconds of one clock; currents are milliamperes.
class DeskAnalogOutput final
{
public:
    using ControlType = ZuStdScanners::ZucSensor::AnalogOutputControlType;

    static constexpr double MIN_CURRENT = 4;
    static constexpr double MAX_CURRENT = 20;
    static constexpr uint64 HOLD_USEC = 10'000;
    static constexpr std::size_t CAPACITY = 16; ///< of the queue

    /// While off, the output drives nothing. Switching it off empties the queue.
    void Enable(bool enable);
    bool IsEnabled() const;

    /// Throws `Zu::Status::BAD_ARGUMENT` for an unknown type.
    void SetControlType(ControlType newType);

    /// Sets the event that drives the output if its control type asks for one. The simulated sensor has no events: the
    /// id is only stored.
    void SetControlId(uint32 newId);
    uint32 ControlId() const;

    /// Adds a current to the queue, or drives it at once if the present one has been held long enough. Throws
    /// `Zu::Status::BAD_ARGUMENT` for a current out of range, `Zu::Status::WRONG_STATE` while the output is off or
    /// driven by events, and `Zu::Status::FULL` while the queue is full.
    void Enqueue(double current, uint64 nowUsec);

    /// The driven current: MIN_CURRENT before the first one, 0 while the output is off.
    double Current(uint64 nowUsec);

private:
    void Advance(uint64 nowUsec);

    bool isEnabled = true;
    ControlType type = ControlType::COMMAND;
    uint32 id = 0;
    double driven = MIN_CURRENT;
    uint64 heldUntilUsec = 0;
    std::deque<double> queue; // currents to come
};

} // namespace ZuHost
