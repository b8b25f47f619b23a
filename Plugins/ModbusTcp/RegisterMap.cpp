#include "Plugins/ModbusTcp/RegisterMap.h"

#include "Plugins/ModbusTcp/Blocks/StateBitsBlock.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;
using PluginCommon::StateFetcher;

namespace
{

constexpr uint16 ANY_COMMAND = 1; // coil 0

constexpr uint16 CoilOf(uint8 commandId)
{
    return static_cast<uint16>(commandId <= CommandSoftwareTrigger ? 1u << commandId : 0u);
}

constexpr uint16 COMMAND_COILS = 2 * CoilOf(CommandSoftwareTrigger) - 1 - ANY_COMMAND; // from CommandStart on

/// The registers of a read that belong to one block.
class Overlap final
{
public:
    Overlap(RegisterLayout::Place const& overlappedPlace, uint16 first, std::span<uint16> readRegisters)
        : place(overlappedPlace),
          registers(readRegisters),
          firstRead(first),
          begin(std::max<uint32>(first, place.first)),
          end(std::min<uint32>(static_cast<uint32>(first + readRegisters.size()), place.first + uint32{place.count}))
    {
    }

    bool Exists() const
    {
        return place.Exists() && begin < end;
    }

    /// `source(i)` returns register i of the block.
    template <typename Source>
    void Fill(Source const& source) const
    {
        for (uint32 i = begin; i < end; ++i)
        {
            registers[i - firstRead] = source(i - place.first);
        }
    }

    /// Encodes `record` with the block.
    template <typename Record>
    void Encode(Record const& record) const
    {
        std::array<uint8, MOST_BYTES> bytes{}; // registers that the block does not encode read 0
        std::size_t const size = 2 * std::size_t{place.count};
        if (size > bytes.size())
        {
            return;
        }
        place.Serialize(std::span(bytes).first(size), &record, sizeof record);
        Fill([&bytes](uint32 i) { return static_cast<uint16>(bytes[2 * i] | bytes[2 * i + 1] << 8); });
    }

private:
    static constexpr std::size_t MOST_BYTES = 144; // of the system block, the longest

    RegisterLayout::Place const& place;
    std::span<uint16> registers;
    uint32 firstRead;
    uint32 begin;
    uint32 end;
};

} // namespace

RegisterMap::RegisterMap(Sources usedSources)
    : sources(std::move(usedSources)), channel(sources.commands), layout(std::make_shared<RegisterLayout const>())
{
}

RegisterMap::~RegisterMap() = default;

uint32 RegisterMap::RegisterCount() const
{
    return RegisterImage::REGISTER_COUNT;
}

void RegisterMap::Read(uint16 first, std::span<uint16> registers)
{
    uint64 seenChanges = 0;
    do
    {
        seenChanges = changes.load();
        sources.image.Read(first, registers);
        auto const present = Layout();
        ReadCommand(*present, first, registers);
        ReadStates(*present, first, registers);
    } while (changes.load() != seenChanges); // else the read may mix two layouts
}

void RegisterMap::ReadCommand(RegisterLayout const& present, uint16 first, std::span<uint16> registers)
{
    if (Overlap const input(present.controlInput, first, registers); input.Exists())
    {
        Zu::MutexLock const guard(writeLock);
        auto const& written = channel.Written();
        input.Fill([&written](uint32 i) { return written[i]; });
    }
    if (Overlap const output(present.controlOutput, first, registers); output.Exists())
    {
        Zu::MutexLock const guard(writeLock);
        output.Encode(channel.LastResult());
    }
}

void RegisterMap::ReadStates(RegisterLayout const& present, uint16 first, std::span<uint16> registers)
{
    Overlap const system(present.system, first, registers);
    Overlap const scanner(present.scanner, first, registers);
    Overlap const bits(present.stateBits, first, registers);
    if (!system.Exists() && !scanner.Exists() && !bits.Exists())
    {
        return;
    }
    StateFetcher::State const state = sources.latestState(present.scannerId);
    Zu::MutexLock const guard(writeLock); // no block is encoded while the order changes
    if (system.Exists())
    {
        system.Encode(state.system);
    }
    if (scanner.Exists())
    {
        scanner.Encode(state.scanner);
    }
    if (bits.Exists())
    {
        ModbusCounters const& counters = sources.counters;
        bits.Encode(StateBitsBlock::States{state, channel.LastResult().status,
                                           counters.queuedResults.load(std::memory_order_relaxed) > 0,
                                           counters.overflowingQueues.load(std::memory_order_relaxed) > 0});
    }
}

ModbusException RegisterMap::Write(uint16 first, std::span<uint16 const> values)
{
    auto const present = Layout();
    Zu::MutexLock const guard(writeLock);
    if (present->controlInput.Covers(first, values.size()))
    {
        return WriteInput(present->controlInput, first, values);
    }
    return values.size() == 1 ? Acknowledge(first, values[0]) : ModbusException::ILLEGAL_DATA_ADDRESS;
}

ModbusException RegisterMap::MaskWrite(uint16 address, uint16 andMask, uint16 orMask)
{
    auto const present = Layout();
    RegisterLayout::Place const& input = present->controlInput;
    bool const isInput = input.Covers(address, 1);
    if (!isInput && address >= RegisterCount())
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    Zu::MutexLock const guard(writeLock); // from the read to the write
    uint16 before = 0;
    if (isInput)
    {
        before = channel.Written()[std::size_t{address} - input.first];
    }
    else
    {
        sources.image.Read(address, {&before, 1});
    }
    auto const value = static_cast<uint16>((before & andMask) | (orMask & ~andMask));
    return isInput ? WriteInput(input, address, {&value, 1}) : Acknowledge(address, value);
}

ModbusException RegisterMap::WriteInput(RegisterLayout::Place const& input, uint16 first,
                                        std::span<uint16 const> values)
{
    uint64 const takenBefore = channel.TakenCount();
    auto const result = channel.Write(*input.block, isBigEndian, std::size_t{first} - input.first, values);
    Count(sources.counters.commands, channel.TakenCount() - takenBefore);
    Count(sources.counters.registersWritten, result == ModbusException::NONE ? values.size() : 0);
    return result;
}

ModbusException RegisterMap::Acknowledge(uint16 address, uint16 number)
{
    auto const result = sources.results.Acknowledge(address, number, isBigEndian);
    Count(sources.counters.registersWritten, result == ModbusException::NONE ? 1 : 0);
    return result;
}

uint16 RegisterMap::ReadCoils()
{
    Zu::MutexLock const guard(writeLock);
    uint8 const command = channel.RunningCommand();
    return command == CommandNone ? uint16{0} : static_cast<uint16>(ANY_COMMAND | CoilOf(command));
}

ModbusException RegisterMap::WriteCoils(uint16 ones)
{
    auto const present = Layout();
    if ((ones & ~COMMAND_COILS) != 0 || !present->controlInput.Exists())
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    if (!std::has_single_bit(ones))
    {
        return ModbusException::ILLEGAL_DATA_VALUE; // a request is one command
    }
    Zu::MutexLock const guard(writeLock);
    auto const commandId = static_cast<uint8>(std::countr_zero(ones));
    uint64 const takenBefore = channel.TakenCount();
    auto const result = channel.Run(*present->controlInput.block, isBigEndian, commandId);
    Count(sources.counters.commands, channel.TakenCount() - takenBefore);
    return result;
}

MapIdentity RegisterMap::Identity()
{
    MapIdentity identity = sources.mapIdentity();
    auto const system = sources.latestState(Layout()->scannerId).system;
    std::size_t const length = std::min<std::size_t>(system.jobFileNameLength, std::size(system.jobFileName));
    identity.job.assign(&system.jobFileName[0], length);
    return identity;
}

void RegisterMap::Install(std::shared_ptr<RegisterLayout const> newLayout)
{
    changes.fetch_add(1);
    Zu::MutexLock const guard(layoutLock);
    if (newLayout->changeCount >= layout->changeCount)
    {
        layout.swap(newLayout);
    }
}

void RegisterMap::ChangeOrder(bool newIsBigEndian, std::function<void()> const& change)
{
    Zu::MutexLock const guard(writeLock);
    changes.fetch_add(1);
    change();
    isBigEndian = newIsBigEndian;
}

std::shared_ptr<RegisterLayout const> RegisterMap::Layout()
{
    Zu::MutexLock const guard(layoutLock);
    return layout;
}

} // namespace ModbusTcp
