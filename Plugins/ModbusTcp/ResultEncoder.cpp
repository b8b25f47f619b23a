#include "Plugins/ModbusTcp/ResultEncoder.h"

#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuCore/ResultItem.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wArrayList.h"
#include "wApi/wMutex.h"

#include <algorithm>

namespace ModbusTcp
{

using ZuControl::ControlProtocol::DefaultMeasurementValueRegisterBlock;
using ZuControl::ControlProtocol::ProtocolScanOutputRegisterBlock;

namespace
{

std::span<uint8> BytesOf(RegisterLayout::Place const& place, std::span<uint8> image)
{
    return image.subspan(2 * std::size_t{place.first}, 2 * std::size_t{place.count});
}

/// Writes what a block shows before its first result: the mark for a missing value, and 0 in all other bytes.
void WriteBlank(RegisterLayout::Place const& place, std::span<uint8> image)
{
    std::span<uint8> const bytes = BytesOf(place, image);
    std::ranges::fill(bytes, uint8{0});
    auto* const value = dynamic_cast<DefaultMeasurementValueRegisterBlock*>(place.block.get());
    if (value != nullptr)
    {
        value->SerializeInvalidMeasurementValue(bytes.data(), 0);
    }
}

} // namespace

ResultEncoder::ResultEncoder(RegisterImage& usedImage, ModbusCounters& usedCounters)
    : image(usedImage), counters(usedCounters), layout(std::make_shared<RegisterLayout const>())
{
}

ResultEncoder::~ResultEncoder() = default;

void ResultEncoder::Install(std::shared_ptr<RegisterLayout const> newLayout)
{
    Zu::MutexLock const guard(lock);
    if (newLayout->changeCount < layout->changeCount)
    {
        return; // another thread has installed a newer layout
    }
    Carry(*layout, *newLayout);
    layout.swap(newLayout);
    faulty.clear();
    image.SetUsedSpan(layout->resultsFirst, layout->resultsEnd);
    image.Publish();
}

void ResultEncoder::Blank()
{
    Zu::MutexLock const guard(lock);
    BlankAll();
}

void ResultEncoder::Pause()
{
    Zu::MutexLock const guard(lock);
    isPaused = true;
    std::ranges::fill(image.Edit(), uint8{0});
    image.Publish();
}

void ResultEncoder::Resume()
{
    Zu::MutexLock const guard(lock);
    isPaused = false;
    BlankAll();
}

void ResultEncoder::Process(wArrayList const& resultSets)
{
    Zu::MutexLock const guard(lock);
    if (isPaused)
    {
        return;
    }
    uint64 const count = wArrayList_Count(resultSets);
    uint64 drops = 0;
    for (uint64 i = 0; i < count; ++i)
    {
        drops += EncodeSet(static_cast<ZuCore::ResultSetObject const*>(wArrayList_At(resultSets, i))) ? 0 : 1;
    }
    image.Publish();
    Count(counters.resultSets, count);
    Count(counters.controlDrops, drops);
}

void ResultEncoder::BlankAll()
{
    for (ResultPlace const& place : layout->Results())
    {
        WriteBlank(place, image.Edit());
    }
    image.Publish();
}

void ResultEncoder::Carry(RegisterLayout const& from, RegisterLayout const& to)
{
    std::span<uint8> const bytes = image.Edit();
    std::vector<uint8> const old(bytes.begin(), bytes.end());
    std::ranges::fill(bytes, uint8{0}); // registers without a block
    for (ResultPlace const& place : to.Results())
    {
        WriteBlank(place, bytes);
        for (ResultPlace const& before : from.Find(place.dataSource))
        {
            if (before.block == place.block)
            {
                auto const source = old.begin() + 2 * before.first;
                std::copy_n(source, 2 * place.count, BytesOf(place, bytes).begin());
            }
        }
    }
}

bool ResultEncoder::EncodeSet(ZuCore::ResultSetObject const* resultSet)
{
    bool isWhole = true;
    uint64 const count = ZuCore::ResultSet_Count(resultSet);
    for (uint64 i = 0; i < count; ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(resultSet, i);
        uint64 const dataSource = ZuCore::ResultInfo_NumericId(ZuCore::ResultItem_ResultInfo(item));
        for (ResultPlace const& place : layout->Find(dataSource))
        {
            isWhole = EncodeItem(place, item) && isWhole;
        }
    }
    return isWhole;
}

bool ResultEncoder::EncodeItem(ResultPlace const& place, ZuCore::ResultItemObject* item)
{
    std::span<uint8> const bytes = BytesOf(place, image.Edit());
    ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData const data{item, 0};
    try
    {
        place.block->Serialize(bytes.data(), bytes.size(), &data, sizeof data);
        return true;
    }
    catch (...) // an exception that left would end the delivery of results for good
    {
        std::ranges::fill(bytes, uint8{0});
        NoteFault(place);
        return false;
    }
}

void ResultEncoder::NoteFault(ResultPlace const& place)
{
    if (std::ranges::find(faulty, place.block.get()) == faulty.end())
    {
        faulty.push_back(place.block.get());
        ZU_LOG_CAUGHT("The block at register %u cannot take the results of its data source",
                      static_cast<unsigned>(place.first));
    }
}

} // namespace ModbusTcp
