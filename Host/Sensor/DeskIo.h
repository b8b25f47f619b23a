#pragma once

#include "Host/Sensor/DeskAnalogOutput.h"
#include "Host/Sensor/DeskDigitalInput.h"
#include "Host/Sensor/DeskDigitalOutput.h"
#include "Host/Sensor/DeskSerialOutput.h"
#include "ZuStdScanners/ZucSensor/IoType.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <array>
#include <functional>

namespace ZuHost
{

/// The inputs and outputs of the sensor on the desk, and the wires between them: the pins 0 and 1 of the digital inputs are tied
/// to the digital outputs 0 and 1. Any thread may call, several at once.
class DeskIo final
{
public:
    using IoType = ZuStdScanners::ZucSensor::IoType;
    using Clock = std::function<uint64()>; ///< microseconds; any thread may ask it

    /// Everything is on at first.
    DeskIo();
    explicit DeskIo(Clock newClock);
    ~DeskIo();

    DeskIo(DeskIo const&) = delete;
    DeskIo& operator=(DeskIo const&) = delete;

    /// How many there are of a kind; -999 for what is no kind.
    static uint64 Count(IoType type);

    // -999 behind the last of a kind.

    bool IsEnabled(IoType type, uint64 index) const;
    void Enable(IoType type, uint64 index, bool enable);

    // Each runs `step` alone, on this thread; it must not come back here. Throws what `step` throws.

    void UseAnalogOutput(uint64 index, std::function<void(DeskAnalogOutput&, uint64 nowUsec)> const& step);
    void UseSerialOutput(uint64 index, std::function<void(DeskSerialOutput&)> const& step);
    void UseDigitalOutput(uint64 index, std::function<void(DeskDigitalOutput&, uint64 nowUsec)> const& step);
    void UseDigitalInput(uint64 index, std::function<void(DeskDigitalInput&)> const& step);

    /// The levels of the digital inputs now, as a stamp carries them: bit 0 is input 0, bit 1 input 1; 0 for one that is off.
    uint16 InputBits() const;

    /// As it was at first.
    void RestoreFactoryState();

private:
    static constexpr std::size_t ANALOG_OUTPUTS = 2;
    static constexpr std::size_t SERIAL_OUTPUTS = 1;
    static constexpr std::size_t DIGITAL_OUTPUTS = 2;
    static constexpr std::size_t DIGITAL_INPUTS = 2;
    static_assert(DIGITAL_OUTPUTS == DeskDigitalInput::PIN_COUNT); // each pin has its wire

    struct Board
    {
        std::array<DeskAnalogOutput, ANALOG_OUTPUTS> analogOutputs;
        std::array<DeskSerialOutput, SERIAL_OUTPUTS> serialOutputs;
        std::array<DeskDigitalOutput, DIGITAL_OUTPUTS> digitalOutputs;
        std::array<DeskDigitalInput, DIGITAL_INPUTS> digitalInputs{DeskDigitalInput(0), DeskDigitalInput(1)};
    };

    Clock const clock;
    mutable Zu::Mutex lock; // a leaf but for the clock
    Board board ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
