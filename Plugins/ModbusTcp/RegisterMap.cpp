#include "Plugins/ModbusTcp/RegisterMap.h"

#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <array>

namespace ModbusTcp
{

using PluginCommon::StateFetcher;

namespace
{

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
        place.block->Serialize(bytes.data(), size, &record, sizeof record);
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
    sources.image.Read(first, registers);
    auto const present = Layout();
    if (Overlap const input(present->controlInput, first, registers); input.Exists())
    {
        Zu::MutexLock const guard(writeLock);
        auto const& written = channel.Written();
        input.Fill([&written](uint32 i) { return written[i]; });
    }
    if (Overlap const output(present->controlOutput, first, registers); output.Exists())
    {
        Zu::MutexLock const guard(writeLock);
        output.Encode(channel.LastResult());
    }
    Overlap const system(present->system, first, registers);
    Overlap const scanner(present->scanner, first, registers);
    if (system.Exists() || scanner.Exists())
    {
        StateFetcher::State const state = sources.latestState(present->scannerId);
        if (system.Exists())
        {
            system.Encode(state.system);
        }
        if (scanner.Exists())
        {
            scanner.Encode(state.scanner);
        }
    }
}

ModbusException RegisterMap::Write(uint16 first, std::span<uint16 const> values)
{
    auto const present = Layout();
    RegisterLayout::Place const& input = present->controlInput;
    if (!input.Exists() || first < input.first || first + values.size() > std::size_t{input.first} + input.count)
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    Zu::MutexLock const guard(writeLock);
    uint64 const takenBefore = channel.TakenCount();
    auto const result = channel.Write(*input.block, isBigEndian, std::size_t{first} - input.first, values);
    Count(sources.counters.commands, channel.TakenCount() - takenBefore);
    Count(sources.counters.registersWritten, result == ModbusException::NONE ? values.size() : 0);
    return result;
}

void RegisterMap::Install(std::shared_ptr<RegisterLayout const> newLayout)
{
    Zu::MutexLock const guard(layoutLock);
    if (newLayout->changeCount >= layout->changeCount)
    {
        layout.swap(newLayout);
    }
}

void RegisterMap::ChangeOrder(bool newIsBigEndian, std::function<void()> const& change)
{
    Zu::MutexLock const guard(writeLock);
    change();
    isBigEndian = newIsBigEndian;
}

std::shared_ptr<RegisterLayout const> RegisterMap::Layout()
{
    Zu::MutexLock const guard(layoutLock);
    return layout;
}

} // namespace ModbusTcp
