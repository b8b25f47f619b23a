#include "Plugins/SparkplugMqtt/EdgeNode.h"

#include "Plugins/Common/StateFetcher.h"
#include "Plugins/SparkplugMqtt/OutputMetrics.h"
#include "Plugins/SparkplugMqtt/SparkplugMetrics.h"
#include "ZuApi/Guard.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace SparkplugMqtt
{

namespace
{

constexpr uint32 LONGEST_STEP_MSEC = 100;
constexpr uint64 USEC_PER_SECOND = 1'000'000;
constexpr uint64 HISTORY_INTERVAL_USEC = USEC_PER_SECOND / EdgeNode::HISTORY_RATE;

char const* NameOf(EdgeNodeSession::Phase phase)
{
    switch (phase)
    {
    case EdgeNodeSession::Phase::PAUSING:
        return "pausing";
    case EdgeNodeSession::Phase::CONNECTING:
        return "connecting";
    case EdgeNodeSession::Phase::SUBSCRIBING:
        return "subscribing";
    case EdgeNodeSession::Phase::WAITING:
        return "waiting for the primary host";
    case EdgeNodeSession::Phase::BORN:
        return "born";
    case EdgeNodeSession::Phase::ENDED:
        return "";
    }
    return "";
}

/// How long a sent sample is kept: longer than the connection to a silent server lasts. libmosquitto sends a ping one
/// keep-alive time after the last message of the server, and ends the connection when the answer is another one late.
uint64 RetentionUsec(uint32 keepAliveSeconds)
{
    return keepAliveSeconds * USEC_PER_SECOND * 5 / 2;
}

} // namespace

EdgeNode::EdgeNode(Settings newSettings, Services newServices, std::optional<uint8> lastBdSeq)
    : settings(std::move(newSettings)),
      services(std::move(newServices)),
      link(settings.link, services.waker),
      session(settings.session, link, *this, lastBdSeq,
              [this](uint64 most) { return std::uniform_int_distribution<uint64>(0, most)(random); }),
      sourceLimits(services.resources),
      shownLost(services.queue.DroppedCount()),
      connectionProblem(services.problems),
      storeProblem(services.problems),
      duelProblem(services.problems),
      clockJumps(services.problems),
      badMessages(services.problems, 1,
                  "Sparkplug MQTT has received messages that it cannot read. Look for the host application that sends "
                  "them to this node."),
      rebirthRequests(
          services.problems, REBIRTHS_OF_A_FLOOD,
          "Host applications ask Sparkplug MQTT for a rebirth at least once a second. Look for the one that "
          "does not take the births.")
{
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "Sparkplug.Net"));
    ZU_CHECK(wThread_Start(thread, Run, this));
}

EdgeNode::~EdgeNode()
{
    isStopping.store(true);
    services.waker.Wake();
    wThread_Destroy(&thread);
}

void EdgeNode::WriteNodeBirth(MetricWriter& /*writer*/, uint64 /*utcMsec*/)
{
}

void EdgeNode::WriteDeviceBirth(MetricWriter& birth, uint64 utcMsec)
{
    while (services.queue.Take(sample)) // older than the birth
    {
        store->Add(sample.metrics, false, wTime_NowUsec());
    }
    aliases.clear();
    systemMetrics.WriteBirth(birth, utcMsec, aliases);
    WriteCommands(birth, utcMsec, aliases);
    WriteResult(birth, latestResult, utcMsec, true, aliases);
    aliases.push_back(OutputMetrics::FINGERPRINT_ALIAS);
    bornLayout = services.outputs.WriteBirth(birth, utcMsec, aliases);
    // After the layout: if the map changes in between, the layout differs from `bornLayout`, and a new birth follows.
    birth.Add({.name = "State/Fingerprint",
               .alias = OutputMetrics::FINGERPRINT_ALIAS,
               .timestampMsec = utcMsec,
               .type = DataType::UINT64,
               .value = uint64{services.outputs.Fingerprint()}});
}

void EdgeNode::DeviceCommand(std::vector<CommandMetric> const& metrics)
{
    services.commands.Begin(InterpretCommand(metrics));
}

void EdgeNode::BirthSequenceChanged(uint8 bdSeq)
{
    services.keepBdSeq(bdSeq);
}

bool EdgeNode::IsBirthSequenceKept()
{
    return services.isBdSeqKept();
}

int EdgeNode::Run(void* argument)
{
    auto& node = *static_cast<EdgeNode*>(argument);
    ZU_GUARD_BOUNDARY([&node] { node.RunUntilStopped(); });
    return 1;
}

Moment EdgeNode::Now()
{
    auto const utc = std::chrono::system_clock::now().time_since_epoch();
    return {wTime_NowUsec(), static_cast<uint64>(std::chrono::duration_cast<std::chrono::milliseconds>(utc).count())};
}

void EdgeNode::RunUntilStopped()
{
    store.emplace(settings.storeFolder,
                  HistoryStore::Limits{settings.storeBytes, RetentionUsec(settings.link.keepAliveSeconds)});
    withoutSessionSinceUsec = wTime_NowUsec();
    while (!isStopping.load())
    {
        ZU_GUARD_BOUNDARY([this] { Step(); });
    }
    Moment const now = Now();
    services.outputs.Flush(now.utcMsec);
    TakeSamples(now);
    session.End(now);
    ShowCounters();
    store.reset();
}

void EdgeNode::Step()
{
    std::vector<MqttLink::Event> const events = link.Poll(LONGEST_STEP_MSEC);
    TellSession(events);
    LookAtClock();
    Moment const now = Now();
    TakeLimits(now);
    session.Tick(now);
    if (session.PresentPhase() == EdgeNodeSession::Phase::BORN && services.outputs.Layout() != bornLayout)
    {
        session.RequestBirth(now);
    }
    bool const isBorn = session.PresentPhase() == EdgeNodeSession::Phase::BORN;
    if (wasBorn && !isBorn)
    {
        store->LinkLost();
        withoutSessionSinceUsec = now.steadyUsec;
    }
    wasBorn = isBorn;
    TakeSystemState(now);
    TakeResults(now);
    services.outputs.Flush(now.utcMsec);
    TakeSamples(now);
    SendHistory(now);
    store->Work(now.steadyUsec);
    ShowCounters();
    ShowProblems(now);
}

void EdgeNode::LookAtClock()
{
    if (clockJumps.Look())
    {
        PluginCommon::Count(services.counters.clockJumps);
    }
}

void EdgeNode::TellSession(std::vector<MqttLink::Event> const& events)
{
    for (MqttLink::Event const& event : events)
    {
        Moment const now = Now();
        switch (event.kind)
        {
        case MqttLink::Event::Kind::CONNECTED:
            session.Connected(now);
            break;
        case MqttLink::Event::Kind::SUBSCRIBED:
            session.Subscribed(now);
            break;
        case MqttLink::Event::Kind::RECEIVED:
            session.Received(event.topic, event.payload, now);
            break;
        case MqttLink::Event::Kind::LOST:
            session.Lost(now);
            break;
        }
    }
}

void EdgeNode::TakeLimits(Moment now)
{
    if (std::optional<SourceLimits::BySource> limits = sourceLimits.Look(now.steadyUsec); limits.has_value())
    {
        services.outputs.SetLimits(std::move(*limits));
    }
}

void EdgeNode::TakeSystemState(Moment now)
{
    systemMetrics.Take(services.fetcher.Latest(""));
    writer.Clear();
    systemMetrics.WriteChanges(writer, now.utcMsec);
    Emit(writer.Bytes(), true, now);
}

void EdgeNode::TakeResults(Moment now)
{
    while (services.commands.TakeResult(latestResult))
    {
        writer.Clear();
        WriteResult(writer, latestResult, now.utcMsec, false, aliases);
        Emit(writer.Bytes(), true, now);
    }
}

void EdgeNode::TakeSamples(Moment now)
{
    while (services.queue.Take(sample))
    {
        Emit(sample.metrics, sample.layout == bornLayout, now);
    }
}

/// Publishes a sample and keeps it until it has arrived, or keeps it until it can be published.
void EdgeNode::Emit(std::span<uint8 const> metrics, bool mayBeLive, Moment now)
{
    if (!metrics.empty())
    {
        bool const isSent = mayBeLive && session.PublishDeviceData(metrics, now);
        store->Add(metrics, isSent, now.steadyUsec);
    }
}

void EdgeNode::SendHistory(Moment now)
{
    uint64 const earliest = now.steadyUsec - LONGEST_STEP_MSEC * 1000; // what one step may catch up
    nextHistoryUsec = std::max(nextHistoryUsec, earliest);
    while (session.CanPublish() && nextHistoryUsec <= now.steadyUsec && store->ReadUnsent(history))
    {
        std::optional<std::size_t> const leftOut = MarkHistorical(marked, history, aliases);
        filteredCount += leftOut.value_or(1);
        if (leftOut.has_value() && !marked.empty())
        {
            session.PublishDeviceData(marked, now);
            PluginCommon::Count(services.counters.historicalMessages);
            nextHistoryUsec += HISTORY_INTERVAL_USEC;
        }
        store->NoteSent(now.steadyUsec);
    }
}

void EdgeNode::ShowCounters()
{
    using PluginCommon::Count;
    SparkplugCounters& counters = services.counters;
    EdgeNodeSession::Counters const& present = session.Counts();
    Count(counters.births, present.births - shown.births);
    Count(counters.dataMessages, present.dataMessages - shown.dataMessages);
    Count(counters.commands, present.commands - shown.commands);
    Count(counters.badMessages, present.badMessages - shown.badMessages);
    Count(counters.rebirthRequests, present.rebirthRequests - shown.rebirthRequests);
    Count(counters.lostSessions, present.lostSessions - shown.lostSessions);
    shown = present;
    uint64 const lost = store->LostCount() + services.queue.DroppedCount() + filteredCount;
    Count(counters.controlDrops, lost - std::exchange(shownLost, lost));
    Count(counters.bytesOut, link.BytesOut() - std::exchange(shownBytes, link.BytesOut()));
    counters.storedSamples.store(store->Count(), std::memory_order_relaxed);
    counters.storedBytes.store(store->Bytes(), std::memory_order_relaxed);
    counters.unsentSamples.store(store->UnsentCount(), std::memory_order_relaxed);
    ServerAddress const& server = settings.link.servers.at(session.Server());
    services.metrics.server.Set(server.host + ":" + std::to_string(server.port));
    services.metrics.session.Set(NameOf(session.PresentPhase())); // a reader of the phase finds its server
}

void EdgeNode::ShowProblems(Moment now)
{
    connectionProblem.Show(ConnectionProblem(now));
    storeProblem.Show(store->Failure().empty() ? "" : "The store of Sparkplug MQTT fails: " + store->Failure());
    bool const isDuel = session.EarlyLosses() >= EARLY_LOSSES_OF_A_DUEL;
    duelProblem.Show(isDuel ? "Sparkplug MQTT loses its session soon after each birth. Perhaps another sensor has the "
                              "same group id and edge node id."
                            : "");
    badMessages.Look(session.Counts().badMessages, now.steadyUsec);
    rebirthRequests.Look(session.Counts().rebirthRequests, now.steadyUsec);
}

std::string EdgeNode::ConnectionProblem(Moment now)
{
    bool const isWhole = session.PresentPhase() == EdgeNodeSession::Phase::BORN;
    if (isWhole || now.steadyUsec - withoutSessionSinceUsec < PATIENCE_USEC)
    {
        return "";
    }
    if (session.PresentPhase() == EdgeNodeSession::Phase::WAITING)
    {
        return "Sparkplug MQTT waits for the primary host " + settings.session.primaryHostId;
    }
    std::string const& reason = link.LastFailure();
    return "Sparkplug MQTT has no session: " + (reason.empty() ? "no server answers" : reason);
}

} // namespace SparkplugMqtt
