#include "Plugins/AsciiTcp/ResultBoard.h"

#include "Plugins/AsciiTcp/AsciiMetrics.h"
#include "Plugins/AsciiTcp/DataFeed.h"
#include "ZuCore/ResultItem.h"
#include "ZuCore/ResultSet.h"
#include "ZuVision/ZvMessages.h"
#include "wApi/wArrayList.h"
#include "wApi/wMutex.h"
#include "wBeacon/wMsgInfo.h"

#include <cmath>

namespace AsciiTcp
{

namespace
{

/// The stamp in `message`; null if it is none.
wStamp const* StampOf(void const* message)
{
    return wObject_Is(message, ZuVision::ZvStampMsg_Class) ? ZuVision::ZvMsg_StampAt(message, 0) : nullptr;
}

Reading Read(void const* message)
{
    if (wStamp const* const stamp = StampOf(message); stamp != nullptr)
    {
        return {Reading::State::VALID, 1, static_cast<double>(stamp->stampCounter)};
    }
    double const value = ZuVision::ZvMeasurementMsg_Value(message); // the missing value for other message types
    bool const isNumber = std::isfinite(value) && value != ZuVision::MISSING_MEASUREMENT;
    uint8 const decision = ZuVision::ZvMeasurementMsg_Decision(message);
    return isNumber ? Reading{Reading::State::VALID, decision, value} : Reading{Reading::State::INVALID, decision, 0};
}

} // namespace

ResultBoard::ResultBoard(DataFeed& usedFeed, AsciiCounters& usedCounters)
    : feed(usedFeed), counters(usedCounters), table(std::make_shared<OutputTable const>())
{
}

ResultBoard::~ResultBoard() = default;

void ResultBoard::Install(std::shared_ptr<OutputTable const> newTable)
{
    Zu::MutexLock const guard(lock);
    std::vector<Reading> readings(newTable->Outputs().size());
    for (std::size_t i = 0; i < readings.size(); ++i)
    {
        OutputTable::Output const& output = newTable->Outputs()[i];
        std::size_t const before = table->FindName(output.name);
        if (before != OutputTable::NOWHERE && table->Outputs()[before].source == output.source)
        {
            readings[i] = newest[before];
        }
    }
    table.swap(newTable);
    newest.swap(readings);
}

void ResultBoard::SetDecimals(uint32 newDecimals)
{
    decimals.store(newDecimals, std::memory_order_relaxed);
}

bool ResultBoard::Process(wArrayList const& resultSets)
{
    std::shared_ptr<OutputTable const> const present = Table();
    bool const isRead = feed.HasReaders();
    uint64 const count = wArrayList_Count(resultSets);
    ofBatch.assign(present->Outputs().size(), Reading{});
    for (uint64 i = 0; i < count; ++i)
    {
        TakeSet(static_cast<ZuCore::ResultSetObject const*>(wArrayList_At(resultSets, i)), *present);
        if (isRead)
        {
            WriteLine(*present);
        }
    }
    Count(counters.resultSets, count);
    Zu::MutexLock const guard(lock);
    for (std::size_t i = 0; table == present && i < newest.size(); ++i) // readings of a replaced table are discarded
    {
        newest[i] = ofBatch[i].state != Reading::State::NONE ? ofBatch[i] : newest[i];
    }
    return isRead && count > 0;
}

bool ResultBoard::AppendReading(std::string& answer, std::string_view name) const
{
    Zu::MutexLock guard(lock);
    std::size_t const place = table->FindName(name);
    if (place == OutputTable::NOWHERE)
    {
        return false;
    }
    Reading const reading = newest[place];
    guard.Unlock();
    AppendName(answer, name);
    answer.push_back(' ');
    AppendValue(answer, reading, decimals.load(std::memory_order_relaxed));
    answer.push_back(' ');
    AppendNumber(answer, reading.decision);
    return true;
}

void ResultBoard::AppendNames(std::string& answer) const
{
    std::shared_ptr<OutputTable const> const present = Table();
    AppendNumber(answer, present->Outputs().size());
    for (OutputTable::Output const& output : present->Outputs())
    {
        answer.append(" ").append(output.written);
    }
}

std::shared_ptr<OutputTable const> ResultBoard::Table() const
{
    Zu::MutexLock const guard(lock);
    return table;
}

void ResultBoard::TakeSet(ZuCore::ResultSetObject const* resultSet, OutputTable const& present)
{
    ofSet.assign(present.Outputs().size(), Reading{});
    frame = "-";
    uint64 const count = ZuCore::ResultSet_Count(resultSet);
    for (uint64 i = 0; i < count; ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(resultSet, i);
        void const* const message = wMsgInfo_Msg(ZuCore::ResultItem_MsgInfo(item));
        if (wStamp const* const stamp = StampOf(message); stamp != nullptr)
        {
            frame.clear();
            AppendNumber(frame, stamp->stampCounter);
        }
        uint64 const dataSource = ZuCore::ResultInfo_NumericId(ZuCore::ResultItem_ResultInfo(item));
        if (std::size_t const place = present.FindDataSource(dataSource); place != OutputTable::NOWHERE)
        {
            ofSet[place] = Read(message);
            ofBatch[place] = ofSet[place];
        }
    }
}

void ResultBoard::WriteLine(OutputTable const& present)
{
    uint32 const digits = decimals.load(std::memory_order_relaxed);
    line.assign("DATA ").append(frame);
    for (std::size_t i = 0; i < ofSet.size(); ++i)
    {
        if (ofSet[i].state != Reading::State::NONE)
        {
            line.append(" ").append(present.Outputs()[i].written).append("=");
            AppendValue(line, ofSet[i], digits);
            line.push_back(':');
            AppendNumber(line, ofSet[i].decision);
        }
    }
    line.push_back('\n');
    feed.Publish(line);
}

} // namespace AsciiTcp
