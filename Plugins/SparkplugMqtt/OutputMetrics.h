#pragma once

#include "Plugins/SparkplugMqtt/MetricWriter.h"
#include "Plugins/SparkplugMqtt/SourceLimits.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class wArrayList;

namespace ZuControl::ControlProtocol
{
class TextIdStandardProtocolOutputMap;
}

namespace ZuCore
{
struct ResultSetObject;
}

namespace SparkplugMqtt
{

class SampleQueue;

/// Converts the times of scans, microseconds of the sensor's clock, to UTC. It follows the difference of the two clocks,
/// and begins anew when it jumps by more than JUMP_MSEC.
class ScanClock final
{
public:
    static constexpr uint64 JUMP_MSEC = 1000;

    /// The UTC time of a scan that arrives at `utcMsec`. Never later than `utcMsec`.
    uint64 UtcMsec(uint64 scanUsec, uint64 utcMsec);

private:
    std::optional<int64> offsetMsec; // the smallest difference: of the scan that arrived soonest
};

/// The outputs of the service as metrics of the device: "Outputs/<id>", the value, and "Decisions/<id>".
///
/// A result set makes one sample with all metrics that have changed, at most one sample in a period; what changed within
/// the period follows at its end. A value has changed if it differs from the last one in a sample or birth by more than
/// the dead band, or if it has become missing or is there again. The timestamp is the time of the scan.
///
/// A birth has the unit and the limits of each value, as far as they are known.
///
/// A metric has the same alias for as long as its output has the same id, also after a restart: the alias is a hash of
/// the name. If two names of a map have one hash, the later one takes the next number.
///
/// Threads: any; results arrive on the dispatcher's thread only.
class OutputMetrics final
{
public:
    static constexpr std::size_t MOST_SAMPLE_BYTES = 64 * 1024;
    static constexpr uint64 FINGERPRINT_ALIAS = 30;
    static constexpr uint64 FIRST_HASHED_ALIAS = uint64{1} << 27; ///< four bytes in messages

    explicit OutputMetrics(SampleQueue& usedQueue);
    OutputMetrics(OutputMetrics const&) = delete;
    OutputMetrics& operator=(OutputMetrics const&) = delete;

    /// Replaces the outputs. Other ids or sources give a new layout. An output that keeps both keeps its readings.
    void Install(ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap& map);

    /// Replaces the limits of the outputs. Other limits of an output give a new layout.
    void SetLimits(SourceLimits::BySource newLimits);

    void SetRules(double newDeadBand, uint64 newPeriodMsec);

    /// Takes the results of a batch that has arrived at `utcMsec`.
    void Process(wArrayList const& resultSets, uint64 utcMsec);

    /// Makes the sample that waits for the end of its period, if the period is over.
    void Flush(uint64 utcMsec);

    /// Appends all metrics with their latest values, and their aliases in ascending order. Returns the layout.
    uint64 WriteBirth(MetricWriter& birth, uint64 utcMsec, std::vector<uint64>& aliases);

    uint64 Layout() const;

    /// The fingerprint of the output map, as GET /controls/SparkplugMqtt/plc shows it.
    uint32 Fingerprint() const;

private:
    struct Reading
    {
        bool isValid = false;
        bool decision = false;
        double value = 0;
    };

    struct Output
    {
        std::string id;
        std::string source;
        uint64 valueAlias = 0;
        uint64 decisionAlias = 0;
        char const* unit = ""; // a literal
        std::optional<ValueLimits> limits = {};
        Reading newest;
        Reading told; // as in the last sample or birth
    };

    static Reading Read(void const* message);
    static void Append(MetricWriter& to, Output const& output, uint64 stampMsec, bool isBirth, bool withDecision,
                       bool withQuality);
    void TakeSet(ZuCore::ResultSetObject const* resultSet, uint64 utcMsec) ZU_REQUIRES(lock);
    void KeepValues(std::vector<Output>& newOutputs) const ZU_REQUIRES(lock);
    void MakeSample() ZU_REQUIRES(lock);
    std::optional<ValueLimits> LimitsOf(std::string const& source) const ZU_REQUIRES(lock);
    bool HasChanged(Reading const& newest, Reading const& told) const ZU_REQUIRES(lock);
    std::size_t FindSource(uint64 dataSource) const ZU_REQUIRES(lock);

    SampleQueue& queue;

    // The lock of the queue is taken under it.
    mutable Zu::Mutex lock;
    std::vector<Output> outputs ZU_GUARDED_BY(lock);
    std::vector<std::pair<uint64, std::size_t>> places ZU_GUARDED_BY(lock); // by the number of the source
    uint64 layout ZU_GUARDED_BY(lock) = 0;
    uint32 fingerprint ZU_GUARDED_BY(lock) = 0;
    SourceLimits::BySource limits ZU_GUARDED_BY(lock);
    double deadBand ZU_GUARDED_BY(lock) = 0;
    uint64 periodMsec ZU_GUARDED_BY(lock) = 0;
    ScanClock clock ZU_GUARDED_BY(lock);
    uint64 newestMsec ZU_GUARDED_BY(lock) = 0;  // time of the newest set
    uint64 sampleMsec ZU_GUARDED_BY(lock) = 0;  // time of the last sample
    bool isWaiting ZU_GUARDED_BY(lock) = false; // sets have come since the last sample
    MetricWriter writer ZU_GUARDED_BY(lock){MOST_SAMPLE_BYTES};
};

} // namespace SparkplugMqtt
