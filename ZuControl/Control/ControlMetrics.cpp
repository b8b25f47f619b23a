#include "ZuControl/Control/ControlMetrics.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuCommon/Metrics.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/Control/MetricsRecord.h"
#include "wApi/wTime.h"

namespace ZuControl
{

namespace
{

constexpr uint64 PATIENCE_USEC = 1'000'000;

/// How much longer a report waits for the running update: until the update's round has lasted for `PATIENCE_USEC`. An
/// update that hangs therefore delays the reports once, and not each second.
uint64 PatienceLeft(MetricsPulse const& pulse)
{
    uint64 const sinceUsec = pulse.Read().roundSinceUsec;
    uint64 const now = wTime_NowUsec();
    uint64 const waitedUsec = sinceUsec != 0 && now > sinceUsec ? now - sinceUsec : 0;
    return PATIENCE_USEC > waitedUsec ? PATIENCE_USEC - waitedUsec : 0;
}

// The labels of the log: private operations write their lines under the name of the public operation.
constexpr char const* ADDING = "ZuControl::ControlMetrics::AddReportHandler";
constexpr char const* REMOVING = "ZuControl::ControlMetrics::RemoveReportHandler";

} // namespace

ControlMetrics::ControlMetrics(IControlManager& usedManager) : manager(usedManager)
{
    ZU_CHECK(wLock_Construct(&lock, nullptr));
    TakeFirstSnapshots();
    reportTimer = std::make_unique<Zu::AsyncTimer>([this](Zu::AsyncTimer&) { DispatchReports(); });
    updateTimer = std::make_unique<Zu::AsyncTimer>([this](Zu::AsyncTimer&) { UpdateMetrics(); });
    updateTimer->Start(updateInterval, false); // last: no later step can throw
}

ControlMetrics::~ControlMetrics()
{
    // The text ends with a full stop, unlike that of other destructors.
    Zu::GuardStep(__LINE__, __FILE__, ZU_FUNCTION_LABEL, "Exception thrown in destructor.", [this] {
        reportTimer->Stop();
        reportTimer.reset();
    });
    updateTimer.reset();
}

ZuCommon::IMetricsSource const& ControlMetrics::LastReport(std::string const& key)
{
    return manager.GetInstance(key).MetricsSource();
}

ControlMetrics::CallbackId ControlMetrics::AddReportHandler(ReportHandler handler, std::string const& key)
{
    if (!handler)
    {
        return Subscribe({}, key);
    }
    return Subscribe([this, key, handler = std::move(handler)](
                         Source const& source) { RecordOf(key).Show(source, handler, PatienceLeft(pulse)); },
                     key);
}

void ControlMetrics::RemoveReportHandler(CallbackId id, std::string const& key)
{
    auto const event = EventOf(key);
    if (event == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    event->Remove(id); // may wait, so the lock is not held
    bool isLast = false;
    {
        Zu::Locker const guard(lock);
        auto const position = reportHandlers.find(key); // again: other threads may subscribe and leave meanwhile
        if (position != reportHandlers.end() && position->second->Empty())
        {
            reportHandlers.erase(position);
        }
        isLast = reportHandlers.empty();
    }
    if (isLast)
    {
        StopReporting();
    }
}

ControlMetrics::CallbackId ControlMetrics::AddSnapshotHandler(SnapshotHandler handler, std::string const& key)
{
    return Subscribe([this, key, handler = std::move(handler)](Source const&) { handler(*Snapshot(key)); }, key);
}

std::shared_ptr<MetricsSnapshot const> ControlMetrics::Snapshot(std::string const& key)
{
    Source const& source = LastReport(key);
    return RecordOf(key).Read(source, PatienceLeft(pulse));
}

ControlVitals::Metrics ControlMetrics::Vitals() const
{
    return pulse.Read();
}

void ControlMetrics::UpdateMetrics()
{
    MetricsPulse::Round round(pulse);
    for (std::string const& name : manager.List())
    {
        round.ComeTo(name);
        ZuCommon::IMetricsKeeper& keeper = manager.GetInstance(name).MetricsKeeper();
        RecordOf(name).Update(keeper); // an exception of a protocol ends this round; the timer logs it
    }
    round.Done();
}

void ControlMetrics::DispatchReports()
{
    for (auto const& [key, event] : SubscribedEvents())
    {
        event->Fire(manager.GetInstance(key).MetricsSource());
    }
}

/// Takes a snapshot of each record, so that a read finds one also when the first round of updates hangs. A record that
/// cannot be read is skipped: a later read reports the reason.
void ControlMetrics::TakeFirstSnapshots()
{
    for (std::string const& name : manager.List())
    {
        try
        {
            Snapshot(name);
        }
        catch (...)
        {
        }
    }
}

ControlMetrics::CallbackId ControlMetrics::Subscribe(ReportHandler handler, std::string const& key)
{
    Zu::Locker const guard(lock);
    auto position = reportHandlers.find(key);
    if (position == reportHandlers.end())
    {
        manager.GetInstance(key).MetricsSource(); // throws for an unknown type, before anything changes
        if (reportHandlers.empty())
        {
            StartReporting();
        }
        position = reportHandlers.emplace(key, std::make_shared<ReportEvent>()).first; // also for an empty handler
    }
    return position->second->Add(std::move(handler));
}

void ControlMetrics::StartReporting()
{
    reportTimer->Start(reportInterval, false);
    if (!isReporting)
    {
        isReporting = true;
        ZU_LOG_LINE(Zu::Logging::FLAGS_INFO, ADDING, "Control metrics reporting started.");
    }
}

void ControlMetrics::StopReporting()
{
    reportTimer->Stop();
    Zu::Locker const guard(lock);
    if (!reportHandlers.empty())
    {
        // Another thread has subscribed meanwhile, and the stop has undone its start.
        reportTimer->Start(reportInterval, false);
    }
    else if (isReporting)
    {
        isReporting = false;
        ZU_LOG_LINE(Zu::Logging::FLAGS_INFO, REMOVING, "Control metrics reporting stopped.");
    }
}

MetricsRecord& ControlMetrics::RecordOf(std::string const& key)
{
    Zu::Locker const guard(lock);
    auto& record = records[key];
    if (record == nullptr)
    {
        record = std::make_unique<MetricsRecord>();
    }
    return *record;
}

std::vector<std::pair<std::string, std::shared_ptr<ControlMetrics::ReportEvent>>>
ControlMetrics::SubscribedEvents() const
{
    Zu::Locker const guard(lock);
    return {reportHandlers.begin(), reportHandlers.end()};
}

/// The event of a subscribed type, or null.
std::shared_ptr<ControlMetrics::ReportEvent> ControlMetrics::EventOf(std::string const& key) const
{
    Zu::Locker const guard(lock);
    auto const position = reportHandlers.find(key);
    return position != reportHandlers.end() ? position->second : nullptr;
}

uint64 ControlMetrics::ChangeReportInterval(uint64 newIntervalUsec)
{
    reportTimer->Stop();
    Zu::Locker const guard(lock);
    uint64 const oldIntervalUsec = std::exchange(reportInterval, newIntervalUsec);
    reportTimer->Start(reportInterval, false); // also without a subscriber
    return oldIntervalUsec;
}

uint64 ControlMetrics::ChangeUpdateInterval(uint64 newIntervalUsec)
{
    updateTimer->Stop();
    Zu::Locker const guard(lock);
    uint64 const oldIntervalUsec = std::exchange(updateInterval, newIntervalUsec);
    updateTimer->Start(updateInterval, false);
    return oldIntervalUsec;
}

void ControlMetrics::StopReportTimer()
{
    reportTimer->Stop();
}

void ControlMetrics::StopUpdateTimer()
{
    updateTimer->Stop();
}

} // namespace ZuControl
