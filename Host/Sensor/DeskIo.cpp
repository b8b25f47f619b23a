#include "Host/Sensor/DeskIo.h"

#include "ZuApi/Exception.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

namespace ZuHost
{

namespace
{

template <typename Channels>
auto& At(Channels& channels, uint64 index, char const* name)
{
    if (index >= channels.size())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "The sensor has no %s %llu", name, static_cast<unsigned long long>(index));
    }
    return channels[index];
}

constexpr char const* ANALOG_OUTPUT = "analog output";
constexpr char const* SERIAL_OUTPUT = "serial output";
constexpr char const* DIGITAL_OUTPUT = "digital output";
constexpr char const* DIGITAL_INPUT = "digital input";

[[noreturn]] void RefuseType(DeskIo::IoType type)
{
    ZU_THROW(Zu::Status::NOT_FOUND, "The sensor has no inputs or outputs of kind %u", static_cast<unsigned>(type));
}

/// Calls `use` with the input or output of this type and index.
template <typename Board, typename Use>
void WithChannel(Board& board, DeskIo::IoType type, uint64 index, Use&& use)
{
    using IoType = DeskIo::IoType;
    switch (type)
    {
    case IoType::ANALOG_OUTPUT:
        return use(At(board.analogOutputs, index, ANALOG_OUTPUT));
    case IoType::SERIAL_OUTPUT:
        return use(At(board.serialOutputs, index, SERIAL_OUTPUT));
    case IoType::DIGITAL_OUTPUT:
        return use(At(board.digitalOutputs, index, DIGITAL_OUTPUT));
    case IoType::DIGITAL_INPUT:
        return use(At(board.digitalInputs, index, DIGITAL_INPUT));
    }
    RefuseType(type);
}

} // namespace

DeskIo::DeskIo() : DeskIo(&wTime_NowUsec)
{
}

DeskIo::DeskIo(Clock newClock) : clock(std::move(newClock))
{
}

DeskIo::~DeskIo() = default;

uint64 DeskIo::Count(IoType type)
{
    switch (type)
    {
    case IoType::ANALOG_OUTPUT:
        return ANALOG_OUTPUTS;
    case IoType::SERIAL_OUTPUT:
        return SERIAL_OUTPUTS;
    case IoType::DIGITAL_OUTPUT:
        return DIGITAL_OUTPUTS;
    case IoType::DIGITAL_INPUT:
        return DIGITAL_INPUTS;
    }
    RefuseType(type);
}

bool DeskIo::IsEnabled(IoType type, uint64 index) const
{
    Zu::MutexLock const guard(lock);
    bool isEnabled = false;
    WithChannel(board, type, index, [&isEnabled](auto const& channel) { isEnabled = channel.IsEnabled(); });
    return isEnabled;
}

void DeskIo::Enable(IoType type, uint64 index, bool enable)
{
    Zu::MutexLock const guard(lock);
    WithChannel(board, type, index, [enable](auto& channel) { channel.Enable(enable); });
}

void DeskIo::UseAnalogOutput(uint64 index, std::function<void(DeskAnalogOutput&, uint64 nowUsec)> const& step)
{
    Zu::MutexLock const guard(lock);
    step(At(board.analogOutputs, index, ANALOG_OUTPUT), clock());
}

void DeskIo::UseSerialOutput(uint64 index, std::function<void(DeskSerialOutput&)> const& step)
{
    Zu::MutexLock const guard(lock);
    step(At(board.serialOutputs, index, SERIAL_OUTPUT));
}

void DeskIo::UseDigitalOutput(uint64 index, std::function<void(DeskDigitalOutput&, uint64 nowUsec)> const& step)
{
    Zu::MutexLock const guard(lock);
    step(At(board.digitalOutputs, index, DIGITAL_OUTPUT), clock());
}

void DeskIo::UseDigitalInput(uint64 index, std::function<void(DeskDigitalInput&)> const& step)
{
    Zu::MutexLock const guard(lock);
    step(At(board.digitalInputs, index, DIGITAL_INPUT));
}

uint16 DeskIo::InputBits() const
{
    Zu::MutexLock const guard(lock);
    uint64 const nowUsec = clock();
    uint32 bits = 0;
    for (std::size_t i = 0; i < board.digitalInputs.size(); ++i)
    {
        DeskDigitalInput const& input = board.digitalInputs[i];
        bool const isHigh = input.IsEnabled() && board.digitalOutputs[input.Pin()].Level(nowUsec);
        bits |= (isHigh ? 1u : 0u) << i;
    }
    return static_cast<uint16>(bits); // two bits
}

void DeskIo::RestoreFactoryState()
{
    Zu::MutexLock const guard(lock);
    board = Board();
}

} // namespace ZuHost
