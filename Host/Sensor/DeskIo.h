#pragma once

#include "Host/Sensor/DeskAnalogOutput.h"
#include "Host/Sensor/DeskDigitalInput.h"
#include "Host/Sensor/DeskDigitalOutput.h"
#include "Host/Sensor/DeskSerialOutput.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <array>
#include <functional>

namespace ZuHost
{

/// The inputs and outputs of the simulated sensor. Pins 0 and 1 of the digital inputs are wired to the digital outputs
/// 0 and 1. All operations are thread-safe.
class DeskIo final
{
public:
    using IoType = ZuStdScanners::ZucSensor::IoType;
    using Clock = std::function<uint64()>; ///< microseconds; thread-safe

    /// All inputs and outputs are on initially.
    DeskIo();
    explicit DeskIo(Clock newClock);
    ~DeskIo();

    DeskIo(DeskIo const&) = delete;
    DeskIo& operator=(DeskIo const&) = delete;

    /// The number of channels of a type. Throws `Zu::Status::NOT_FOUND` for an unknown type.
    static uint64 Count(IoType type);

    // These two throw `Zu::Status::NOT_FOUND` for an index that does not exist.

    bool IsEnabled(IoType type, uint64 index) const;
    void Enable(IoType type, uint64 index, bool enable);

    // Each runs `step` on this thread under the lock; `step` must not call this object. Exceptions of `step` reach the
    // caller. Throws `Zu::Status::NOT_FOUND` for an index that does not exist.

    void UseAnalogOutput(uint64 index, std::function<void(DeskAnalogOutput&, uint64 nowUsec)> const& step);
    void UseSerialOutput(uint64 index, std::function<void(DeskSerialOutput&)> const& step);
    void UseDigitalOutput(uint64 index, std::function<void(DeskDigitalOutput&, uint64 nowUsec)> const& step);
    void UseDigitalInput(uint64 index, std::function<void(DeskDigitalInput&)> const& step);

    /// The present levels of the digital inputs, as in a stamp: bit 0 is input 0, bit 1 is input 1. An input that is
    /// off reads 0.
    uint16 InputBits() const;

    /// Restores the initial state.
    void RestoreFactoryState();

private:
    static constexpr std::size_t ANALOG_OUTPUTS = 2;
    static constexpr std::size_t SERIAL_OUTPUTS = 1;
    static constexpr std::size_t DIGITAL_OUTPUTS = 2;
    static constexpr std::size_t DIGITAL_INPUTS = 2;
    static_assert(DIGITAL_OUTPUTS == DeskDigitalInput::PIN_COUNT); // each pin is wired to an output

    struct Board
    {
        std::array<DeskAnalogOutput, ANALOG_OUTPUTS> analogOutputs;
        std::array<DeskSerialOutput, SERIAL_OUTPUTS> serialOutputs;
        std::array<DeskDigitalOutput, DIGITAL_OUTPUTS> digitalOutputs;
        std::array<DeskDigitalInput, DIGITAL_INPUTS> digitalInputs{DeskDigitalInput(0), DeskDigitalInput(1)};
    };

    Clock const clock;
    mutable Zu::Mutex lock; // a leaf; only the clock is called under it
    Board board ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
