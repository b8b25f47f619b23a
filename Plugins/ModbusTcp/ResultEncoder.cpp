#include "Plugins/ModbusTcp/ResultEncoder.h"

#include "Plugins/ModbusTcp/Blocks/ResultQueueBlock.h"
#include "Plugins/ModbusTcp/Blocks/SourceListBlock.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuCore/ResultItem.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wArrayList.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <array>

namespace ModbusTcp
{

using ZuControl::ControlProtocol::ProtocolScanOutputRegisterBlock;

namespace
{

std::span<uint8> BytesOf(RegisterLayout::Place const& place, std::span<uint8> image)
{
    return image.subspan(2 * std::size_t{place.first}, 2 * std::size_t{place.count});
}

/// Writes what a block shows before its first result.
void WriteBlank(RegisterLayout::Place const& place, std::span<uint8> image)
{
    std::span<uint8> const bytes = BytesOf(place, image);
    if (place.encoder != nullptr)
    {
        place.encoder->WriteBlank(place.ownOrder, bytes);
        return;
    }
    std::ranges::fill(bytes, uint8{0});
}

/// Null for a block of another type.
ResultQueueBlock* QueueOf(RegisterLayout::ListPlace const& place)
{
    return dynamic_cast<ResultQueueBlock*>(place.list);
}

} // namespace

ResultEncoder::ResultEncoder(RegisterImage& usedImage, ModbusCounters& usedCounters)
    : image(usedImage),
      counters(usedCounters),
      layout(std::make_shared<RegisterLayout const>()),
      queueDepth(ResultQueueBlock::DEFAULT_DEPTH)
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
    if (!isPaused)
    {
        Carry(*layout, *newLayout);
    }
    FollowLists(*layout, *newLayout);
    layout.swap(newLayout);
    CountWaiting();
    faulty.clear();
    image.SetUsedSpan(layout->imageFirst, layout->imageEnd);
    if (!isPaused)
    {
        WriteConstants(layout->facts);
        image.Publish();
    }
}

void ResultEncoder::HideFingerprint(RegisterLayout const& newLayout)
{
    Zu::MutexLock const guard(lock);
    if (!isPaused && newLayout.facts.fingerprint != layout->facts.fingerprint)
    {
        WriteConstants({});
        image.Publish();
    }
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
    uint64 const count = wArrayList_Count(resultSets);
    uint64 drops = 0;
    for (uint64 i = 0; i < count; ++i)
    {
        drops += EncodeSet(static_cast<ZuCore::ResultSetObject const*>(wArrayList_At(resultSets, i))) ? 0 : 1;
    }
    PublishLists();
    CountWaiting();
    Count(counters.resultSets, count);
    Count(counters.controlDrops, drops);
}

void ResultEncoder::SetQueueDepth(uint32 newDepth)
{
    Zu::MutexLock const guard(lock);
    queueDepth = newDepth;
    for (ListPlace const& place : layout->Lists())
    {
        if (ResultQueueBlock* const queue = QueueOf(place))
        {
            CountLost(place, queue->SetDepth(newDepth));
            Show(place);
        }
    }
    PublishLists();
    CountWaiting();
}

ModbusException ResultEncoder::Acknowledge(uint16 address, uint16 value, bool isBigEndian)
{
    Zu::MutexLock const guard(lock);
    auto const place = std::ranges::find(layout->Lists(), address, &ListPlace::first);
    ResultQueueBlock* const queue = place != layout->Lists().end() ? QueueOf(*place) : nullptr;
    if (queue == nullptr)
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    auto const high = static_cast<uint8>(value >> 8);
    auto const low = static_cast<uint8>(value & 0xFF);
    std::array<uint8, 2> const bytes = {isBigEndian ? high : low, isBigEndian ? low : high};
    uint16 number = 0;
    queue->Deserialize(&number, sizeof number, bytes.data(), bytes.size());
    if (!queue->Acknowledge(number))
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    Show(*place);
    PublishLists();
    CountWaiting();
    return ModbusException::NONE;
}

int32 ResultEncoder::OverflowingQueue()
{
    Zu::MutexLock const guard(lock);
    for (ListPlace const& place : layout->Lists())
    {
        ResultQueueBlock const* const queue = QueueOf(place);
        if (queue != nullptr && queue->IsOverflowing())
        {
            return place.first;
        }
    }
    return -1;
}

void ResultEncoder::BlankAll()
{
    for (ResultPlace const& place : layout->Results())
    {
        if (place.list == nullptr)
        {
            WriteBlank(place, image.Edit());
        }
    }
    for (ListPlace const& place : layout->Lists())
    {
        place.list->Blank();
        Show(place);
    }
    WriteConstants(layout->facts);
    image.Publish();
}

/// Encodes a block with a list, unless the encoder is paused: then `Resume` does.
void ResultEncoder::Show(ListPlace const& place)
{
    if (!isPaused)
    {
        place.list->Encode(BytesOf(place, image.Edit()));
    }
}

/// Publishes the image, unless the encoder is paused, or a block with a list may have encoded in an order that is newer than
/// its layout: then the installation of the next layout publishes it.
void ResultEncoder::PublishLists()
{
    if (isPaused)
    {
        return;
    }
    auto const isCurrent = [](ListPlace const& place) {
        return place.encoder == nullptr || place.encoder->PresentOrder() == place.ownOrder;
    };
    if (std::ranges::all_of(layout->Lists(), isCurrent))
    {
        image.Publish();
    }
}

void ResultEncoder::WriteConstants(LayoutFacts const& facts)
{
    for (RegisterLayout::Place const& place : layout->Constants())
    {
        std::span<uint8> const bytes = BytesOf(place, image.Edit());
        place.Serialize(bytes, &facts, sizeof facts);
    }
}

void ResultEncoder::Carry(RegisterLayout const& from, RegisterLayout const& to)
{
    std::span<uint8> const bytes = image.Edit();
    std::vector<uint8> const old(bytes.begin(), bytes.end());
    std::ranges::fill(bytes, uint8{0}); // registers without a block
    for (ResultPlace const& place : to.Results())
    {
        if (place.list != nullptr)
        {
            continue; // its content is in the block
        }
        WriteBlank(place, bytes);
        for (ResultPlace const& before : from.Find(place.dataSource))
        {
            if (before.block == place.block && before.ownOrder == place.ownOrder)
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
    EndSet();
    return isWhole;
}

bool ResultEncoder::EncodeItem(ResultPlace const& place, ZuCore::ResultItemObject* item)
{
    std::span<uint8> const bytes = BytesOf(place, image.Edit());
    ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData const data{item, 0};
    try
    {
        if (place.list != nullptr)
        {
            place.list->Take(place.placeInList, place.list->Read(item));
            return true;
        }
        if (isPaused)
        {
            return true;
        }
        place.Serialize(bytes, &data, sizeof data);
        return true;
    }
    catch (...) // an exception that left would end the delivery of results for good
    {
        if (place.list != nullptr)
        {
            place.list->Take(place.placeInList, {}); // the others of the list are shown
        }
        else
        {
            std::ranges::fill(bytes, uint8{0});
        }
        NoteFault(place);
        return false;
    }
}

void ResultEncoder::EndSet()
{
    for (ListPlace const& place : layout->Lists())
    {
        ResultQueueBlock const* const queue = QueueOf(place);
        bool const wasOverflowing = queue != nullptr && queue->IsOverflowing();
        auto const outcome = place.list->EndSet();
        if (outcome.isChanged)
        {
            Show(place);
        }
        if (!outcome.isLost)
        {
            continue;
        }
        Count(counters.queueOverflows);
        if (!wasOverflowing)
        {
            ZU_LOG_WARNING("The result queue at register %u is full: new results are lost until the PLC has read more",
                           unsigned{place.first});
        }
    }
}

/// Prepares the blocks with lists for a new layout.
void ResultEncoder::FollowLists(RegisterLayout const& from, RegisterLayout const& to)
{
    for (ListPlace const& place : to.Lists())
    {
        CountLost(place, place.list->Follow(place.sources));
        if (ResultQueueBlock* const queue = QueueOf(place))
        {
            CountLost(place, queue->SetDepth(queueDepth));
        }
        Show(place);
    }
    for (ListPlace const& place : from.Lists())
    {
        ResultQueueBlock const* const queue = QueueOf(place);
        if (queue != nullptr && std::ranges::find(to.Lists(), place.list, &ListPlace::list) == to.Lists().end())
        {
            CountLost(place, queue->WaitingCount());
        }
    }
}

/// Counts and logs results that a change of the settings has taken from a queue.
void ResultEncoder::CountLost(ListPlace const& place, uint64 lostCount)
{
    if (lostCount > 0)
    {
        Count(counters.queueOverflows, lostCount);
        ZU_LOG_WARNING("A change of the result queue at register %u has lost %llu results that the PLC had not read",
                       unsigned{place.first}, static_cast<unsigned long long>(lostCount));
    }
}

void ResultEncoder::CountWaiting()
{
    uint64 waiting = 0;
    uint64 overflowing = 0;
    for (ListPlace const& place : layout->Lists())
    {
        if (ResultQueueBlock const* const queue = QueueOf(place))
        {
            waiting += queue->WaitingCount();
            overflowing += queue->IsOverflowing() ? 1 : 0;
        }
    }
    counters.queuedResults.store(waiting, std::memory_order_relaxed);
    counters.overflowingQueues.store(overflowing, std::memory_order_relaxed);
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
