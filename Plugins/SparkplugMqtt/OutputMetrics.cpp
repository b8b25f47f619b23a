#include "Plugins/SparkplugMqtt/OutputMetrics.h"

#include "Plugins/SparkplugMqtt/SampleQueue.h"
#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "ZuCore/DataSourceHash.h"
#include "ZuCore/ResultItem.h"
#include "ZuCore/ResultSet.h"
#include "ZuVision/ZvMessages.h"
#include "wApi/wArrayList.h"
#include "wBeacon/wMsgInfo.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace SparkplugMqtt
{

using ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap;

namespace
{

constexpr std::string_view VALUE_PREFIX = "Outputs/";
constexpr std::string_view DECISION_PREFIX = "Decisions/";

wStamp const* StampOf(void const* message)
{
    return wObject_Is(message, ZuVision::ZvStampMsg_Class) ? ZuVision::ZvMsg_StampAt(message, 0) : nullptr;
}

/// A free number from the hash of the name (FNV-1a) on.
uint64 TakeAlias(std::set<uint64>& taken, std::string const& name)
{
    uint32 hash = 2166136261U;
    for (char const character : name)
    {
        hash = (hash ^ static_cast<uint8>(character)) * 16777619U;
    }
    uint64 alias = OutputMetrics::FIRST_HASHED_ALIAS + (hash & (OutputMetrics::FIRST_HASHED_ALIAS - 1));
    while (!taken.insert(alias).second)
    {
        ++alias;
    }
    return alias;
}

} // namespace

uint64 ScanClock::UtcMsec(uint64 scanUsec, uint64 utcMsec)
{
    int64 const scanMsec = static_cast<int64>(scanUsec / 1000);
    int64 const difference = static_cast<int64>(utcMsec) - scanMsec;
    bool const isNew =
        !offsetMsec.has_value() || difference < *offsetMsec || difference > *offsetMsec + static_cast<int64>(JUMP_MSEC);
    offsetMsec = isNew ? difference : *offsetMsec;
    return static_cast<uint64>(scanMsec + *offsetMsec);
}

OutputMetrics::OutputMetrics(SampleQueue& usedQueue) : queue(usedQueue)
{
}

void OutputMetrics::Install(TextIdStandardProtocolOutputMap& map)
{
    std::vector<Output> newOutputs;
    std::vector<std::pair<uint64, std::size_t>> newPlaces;
    std::set<uint64> taken;
    ZuControl::ControlProtocol::Layout newLayout;
    newLayout.kind = ZuControl::ControlProtocol::Layout::Kind::TEXTS;
    map.BeginLock(); // items that `At` returns stay valid until `EndLock`
    for (uint64 i = 0; i < map.Count(); ++i)
    {
        auto const& item = map.At(i);
        newPlaces.emplace_back(ZuCore::DataSourceHash(item.source.Get()), newOutputs.size());
        newOutputs.push_back({.id = item.outputId.Get(), .source = item.source.Get(), .newest = {}, .told = {}});
        newLayout.entries.emplace_back();
        newLayout.entries.back().textId = item.outputId.Get();
        newLayout.entries.back().source = item.source.Get();
    }
    map.EndLock();
    uint32 const newFingerprint = ZuControl::ControlProtocol::Fingerprint::Of({newLayout});
    for (Output& output : newOutputs)
    {
        output.valueAlias = TakeAlias(taken, std::string(VALUE_PREFIX) + output.id);
        output.unit = ZuControl::ControlProtocol::UnitOfSource(output.source);
        output.decisionAlias = TakeAlias(taken, std::string(DECISION_PREFIX) + output.id);
    }
    std::ranges::sort(newPlaces);
    Zu::MutexLock const guard(lock);
    bool const isSame = std::ranges::equal(outputs, newOutputs, [](Output const& first, Output const& second) {
        return first.id == second.id && first.source == second.source;
    });
    if (isSame && layout != 0)
    {
        return;
    }
    KeepValues(newOutputs);
    outputs.swap(newOutputs);
    places.swap(newPlaces);
    fingerprint = newFingerprint;
    ++layout;
}

/// Gives the outputs that stay their values.
void OutputMetrics::KeepValues(std::vector<Output>& newOutputs) const
{
    for (Output& output : newOutputs)
    {
        output.limits = LimitsOf(output.source);
        auto const before = std::ranges::find(outputs, output.id, &Output::id);
        if (before != outputs.end() && before->source == output.source)
        {
            output.newest = before->newest;
            output.told = before->told;
        }
    }
}

void OutputMetrics::SetLimits(SourceLimits::BySource newLimits)
{
    Zu::MutexLock const guard(lock);
    limits = std::move(newLimits);
    bool hasChanged = false;
    for (Output& output : outputs)
    {
        std::optional<ValueLimits> const present = LimitsOf(output.source);
        hasChanged = hasChanged || output.limits != present;
        output.limits = present;
    }
    layout += hasChanged ? 1 : 0;
}

void OutputMetrics::SetRules(double newDeadBand, uint64 newPeriodMsec)
{
    Zu::MutexLock const guard(lock);
    deadBand = newDeadBand;
    periodMsec = newPeriodMsec;
}

void OutputMetrics::Process(wArrayList const& resultSets, uint64 utcMsec)
{
    Zu::MutexLock const guard(lock);
    uint64 const count = wArrayList_Count(resultSets);
    for (uint64 i = 0; i < count; ++i)
    {
        TakeSet(static_cast<ZuCore::ResultSetObject const*>(wArrayList_At(resultSets, i)), utcMsec);
    }
}

void OutputMetrics::Flush(uint64 utcMsec)
{
    Zu::MutexLock const guard(lock);
    bool const isOver = utcMsec >= sampleMsec + periodMsec || utcMsec < sampleMsec; // or the clock was set back
    if (isWaiting && isOver)
    {
        MakeSample();
    }
}

uint64 OutputMetrics::WriteBirth(MetricWriter& birth, uint64 utcMsec, std::vector<uint64>& aliases)
{
    Zu::MutexLock const guard(lock);
    for (Output& output : outputs)
    {
        Append(birth, output, utcMsec, true, true, true);
        output.told = output.newest;
        aliases.push_back(output.valueAlias);
        aliases.push_back(output.decisionAlias);
    }
    std::ranges::sort(aliases);
    isWaiting = false;
    return layout;
}

uint64 OutputMetrics::Layout() const
{
    Zu::MutexLock const guard(lock);
    return layout;
}

uint32 OutputMetrics::Fingerprint() const
{
    Zu::MutexLock const guard(lock);
    return fingerprint;
}

OutputMetrics::Reading OutputMetrics::Read(void const* message)
{
    if (wStamp const* const stamp = StampOf(message); stamp != nullptr)
    {
        return {true, true, static_cast<double>(stamp->stampCounter)};
    }
    double const value = ZuVision::ZvMeasurementMsg_Value(message); // the missing value for other message types
    bool const isNumber = std::isfinite(value) && value != ZuVision::MISSING_MEASUREMENT;
    return {isNumber, ZuVision::ZvMeasurementMsg_Decision(message) == 1, isNumber ? value : 0};
}

void OutputMetrics::Append(MetricWriter& to, Output const& output, uint64 stampMsec, bool isBirth, bool withDecision,
                           bool withQuality)
{
    Reading const& reading = output.newest;
    std::string const name = isBirth ? std::string(VALUE_PREFIX) + output.id : std::string();
    Metric metric{.name = name,
                  .alias = output.valueAlias,
                  .timestampMsec = stampMsec,
                  .type = isBirth ? std::optional(DataType::DOUBLE) : std::nullopt,
                  .value = reading.isValid ? MetricValue(reading.value) : MetricValue()};
    if (withQuality)
    {
        metric.quality = reading.isValid ? Quality::GOOD : Quality::BAD;
    }
    if (isBirth)
    {
        metric.unit = output.unit;
        metric.limits = output.limits;
    }
    to.Add(metric);
    if (withDecision)
    {
        std::string const decisionName = isBirth ? std::string(DECISION_PREFIX) + output.id : std::string();
        to.Add({.name = decisionName,
                .alias = output.decisionAlias,
                .timestampMsec = stampMsec,
                .type = isBirth ? std::optional(DataType::BOOLEAN) : std::nullopt,
                .value = reading.decision});
    }
}

void OutputMetrics::TakeSet(ZuCore::ResultSetObject const* resultSet, uint64 utcMsec)
{
    uint64 const count = ZuCore::ResultSet_Count(resultSet);
    uint64 stampMsec = utcMsec;
    for (uint64 i = 0; i < count; ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(resultSet, i);
        void const* const message = wMsgInfo_Msg(ZuCore::ResultItem_MsgInfo(item));
        if (wStamp const* const stamp = StampOf(message); stamp != nullptr)
        {
            stampMsec = clock.UtcMsec(stamp->stampTime, utcMsec);
        }
        uint64 const dataSource = ZuCore::ResultInfo_NumericId(ZuCore::ResultItem_ResultInfo(item));
        auto place = std::lower_bound(places.begin(), places.end(), std::pair(dataSource, std::size_t{0}));
        for (; place != places.end() && place->first == dataSource; ++place)
        {
            outputs[place->second].newest = Read(message);
        }
    }
    newestMsec = stampMsec;
    isWaiting = true;
    bool const isOver = stampMsec >= sampleMsec + periodMsec || stampMsec < sampleMsec;
    if (isOver)
    {
        MakeSample();
    }
}

void OutputMetrics::MakeSample()
{
    isWaiting = false;
    writer.Clear();
    for (Output& output : outputs)
    {
        bool const isSwitched = output.newest.isValid != output.told.isValid;
        bool const hasNewDecision = output.newest.decision != output.told.decision;
        if (HasChanged(output.newest, output.told))
        {
            Append(writer, output, newestMsec, false, hasNewDecision, isSwitched);
            output.told = output.newest;
        }
        else if (hasNewDecision)
        {
            writer.Add({.name = {},
                        .alias = output.decisionAlias,
                        .timestampMsec = newestMsec,
                        .type = {},
                        .value = output.newest.decision});
            output.told.decision = output.newest.decision;
        }
    }
    if (writer.Count() > 0)
    {
        sampleMsec = newestMsec;
        queue.Push(layout, writer.Bytes());
    }
}

std::optional<ValueLimits> OutputMetrics::LimitsOf(std::string const& source) const
{
    auto const found = limits.find(source);
    return found == limits.end() ? std::nullopt : std::optional(found->second);
}

bool OutputMetrics::HasChanged(Reading const& newest, Reading const& told) const
{
    bool const hasMoved = newest.isValid && std::abs(newest.value - told.value) > deadBand;
    return newest.isValid != told.isValid || hasMoved;
}

} // namespace SparkplugMqtt
