#pragma once

#include "Plugins/SparkplugMqtt/ClockJumps.h"
#include "Plugins/SparkplugMqtt/CommandRunner.h"
#include "Plugins/SparkplugMqtt/EdgeNodeSession.h"
#include "Plugins/SparkplugMqtt/FrequentEvents.h"
#include "Plugins/SparkplugMqtt/HistoryStore.h"
#include "Plugins/SparkplugMqtt/MqttLink.h"
#include "Plugins/SparkplugMqtt/SampleQueue.h"
#include "Plugins/SparkplugMqtt/SourceLimits.h"
#include "Plugins/SparkplugMqtt/StandingProblem.h"
#include "Plugins/SparkplugMqtt/SystemMetrics.h"
#include "Plugins/SparkplugMqtt/Waker.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace PluginCommon
{
class StateFetcher;
}

namespace ZuCommon
{
class ProblemsManager;
}

namespace ZuControl
{
class IControlResourceAdaptor;
}

namespace SparkplugMqtt
{

class OutputMetrics;
class SparkplugMetrics;
struct SparkplugCounters;

/// A running edge node: the network thread "Sparkplug.Net" with the session, the connection and the store.
///
/// The thread takes samples from the queue, publishes them and adds them to the store. While nothing can be published
/// they wait in the store. After the next birth they go out as historical, at most HISTORY_RATE messages a second,
/// beside the live data.
class EdgeNode final : private INodeContent
{
public:
    static constexpr uint64 HISTORY_RATE = 50;          ///< historical messages a second
    static constexpr uint64 PATIENCE_USEC = 10'000'000; ///< without a session for longer is a problem
    static constexpr uint64 EARLY_LOSSES_OF_A_DUEL = 3;
    static constexpr uint64 REBIRTHS_OF_A_FLOOD = 60; ///< requests a minute

    struct Settings
    {
        EdgeNodeSession::Settings session;
        MqttLink::Settings link;
        std::string storeFolder; ///< empty: the store is in memory
        uint64 storeBytes = 0;
    };

    /// The objects of the service. All outlive the node.
    struct Services
    {
        Waker& waker;
        SampleQueue& queue;
        OutputMetrics& outputs;
        PluginCommon::StateFetcher& fetcher;
        CommandRunner& commands;
        ZuControl::IControlResourceAdaptor* resources; ///< null: the limits of outputs are not known
        ZuCommon::ProblemsManager& problems;
        SparkplugCounters& counters;
        SparkplugMetrics& metrics;
        std::function<void(uint8)> keepBdSeq; ///< as `INodeContent::BirthSequenceChanged`, on the network thread
        std::function<bool()> isBdSeqKept;    ///< as `INodeContent::IsBirthSequenceKept`, on the network thread
    };

    /// Starts the thread. `lastBdSeq` is the number of the last connection, absent if there was none.
    EdgeNode(Settings newSettings, Services newServices, std::optional<uint8> lastBdSeq);
    ~EdgeNode() override; ///< publishes the deaths and ends the thread
    EdgeNode(EdgeNode const&) = delete;
    EdgeNode& operator=(EdgeNode const&) = delete;

private:
    void WriteNodeBirth(MetricWriter& writer, uint64 utcMsec) override;
    void WriteDeviceBirth(MetricWriter& writer, uint64 utcMsec) override;
    void DeviceCommand(std::vector<CommandMetric> const& metrics) override;
    void BirthSequenceChanged(uint8 bdSeq) override;
    bool IsBirthSequenceKept() override;

    static int Run(void* argument);
    static Moment Now();
    void RunUntilStopped();
    void Step();
    void LookAtClock();
    void TellSession(std::vector<MqttLink::Event> const& events);
    void TakeLimits(Moment now);
    void TakeSystemState(Moment now);
    void TakeResults(Moment now);
    void TakeSamples(Moment now);
    void Emit(std::span<uint8 const> metrics, bool mayBeLive, Moment now);
    void SendHistory(Moment now);
    void ShowCounters();
    void ShowProblems(Moment now);
    std::string ConnectionProblem(Moment now);

    Settings const settings;
    Services const services;
    std::mt19937_64 random{std::random_device{}()};
    MqttLink link;
    EdgeNodeSession session;
    std::optional<HistoryStore> store; // opened on the thread: it may block
    SystemMetrics systemMetrics;
    SourceLimits sourceLimits;
    CommandResult latestResult;
    MetricWriter writer{16 * 1024};
    Sample sample;
    std::vector<uint8> history;
    std::vector<uint8> marked;
    std::vector<uint64> aliases; // of the last birth, sorted
    uint64 bornLayout = 0;       // of the last birth
    bool wasBorn = false;
    uint64 nextHistoryUsec = 0;
    uint64 withoutSessionSinceUsec = 0;
    uint64 filteredCount = 0; // historical metrics that no birth has any more
    uint64 shownLost;         // control drops counted so far
    uint64 shownBytes = 0;
    EdgeNodeSession::Counters shown;
    StandingProblem connectionProblem;
    StandingProblem storeProblem;
    StandingProblem duelProblem;
    ClockJumps clockJumps;
    FrequentEvents badMessages;
    FrequentEvents rebirthRequests;
    std::atomic<bool> isStopping{false}; // publishes nothing else
    wThread thread;                      // last: it uses all members above
};

} // namespace SparkplugMqtt
