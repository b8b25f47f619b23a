#include "ZuControl/Control/ControlMetrics.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuCommon/IMetricsKeeper.h"
#include "ZuCommon/IMetricsSource.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "wApi/wTime.h"

namespace ZuControl
{

namespace
{

constexpr uint64 READ_PATIENCE_USEC = 1'000'000;

/// How much longer a reader waits for the round that runs: no round may keep readers waiting for longer than that in all,
/// or a protocol that hangs in its update would take one thread after the other with it.
uint64 PatienceLeft(MetricsPulse const& pulse)
{
    uint64 const sinceUsec = pulse.Read().roundSinceUsec;
    uint64 const now = wTime_NowUsec();
    uint64 const waitedUsec = sinceUsec != 0 && now > sinceUsec ? now - sinceUsec : 0;
    return READ_PATIENCE_USEC > waitedUsec ? READ_PATIENCE_USEC - waitedUsec : 0;
}

} // namespace

ControlMetrics::ControlMetrics(IControlManager& usedManager) : manager(usedManager)
{
    ZU_CHECK(wLock_Construct(&recordLock, nullptr));
    ZU_CHECK(wLock_Construct(&lock, nullptr));
    reportTimer = std::make_unique<Zu::AsyncTimer>([this](Zu::AsyncTimer&) { DispatchReports(); });
    updateTimer = std::make_unique<Zu::AsyncTimer>([this](Zu::AsyncTimer&) { UpdateMetrics(); });
    updateTimer->Start(updateInterval, false); // last: nothing can throw behind it
}

ControlMetrics::~ControlMetrics()
{
    // The sentence has a full stop here, unlike that of other destructors.
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
    auto gate = std::make_unique<Zu::CallbackGate>();
    ReportHandler gated = gate->Bind(std::move(handler));
    Zu::Locker const guard(lock);
    auto position = reportHandlers.find(key);
    if (position == reportHandlers.end())
    {
        manager.GetInstance(key).MetricsSource(); // an unknown type is refused before anything changes
        if (reportHandlers.empty())
        {
            reportTimer->Start(reportInterval, false);
            if (!isReporting)
            {
                isReporting = true;
                ZU_LOG_INFO("Control metrics reporting started.");
            }
        }
        position = reportHandlers.try_emplace(key).first; // also for a handler that is empty
    }
    CallbackId const id = position->second.event->Add(std::move(gated));
    if (id.second)
    {
        position->second.gates.emplace(id.first, std::move(gate));
    }
    return id;
}

void ControlMetrics::RemoveReportHandler(CallbackId id, std::string const& key)
{
    auto const ending = id.first.lock(); // what the handler holds ends behind the lock: it may come back here
    bool isLast = false;
    if (auto const gate = TakeOut(id, key, isLast))
    {
        gate->Close();
    }
    if (!isLast)
    {
        return;
    }
    reportTimer->Stop();
    Zu::Locker const guard(lock);
    if (!reportHandlers.empty())
    {
        reportTimer->Start(reportInterval, false); // somebody subscribed meanwhile, and the stop undid that start
    }
    else if (isReporting)
    {
        isReporting = false;
        ZU_LOG_INFO("Control metrics reporting stopped.");
    }
}

void ControlMetrics::ReadReport(std::string const& key, ReportHandler const& reader)
{
    ZuCommon::IMetricsSource const& source = LastReport(key);
    Zu::Locker const guard(recordLock, PatienceLeft(pulse));
    reader(source);
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
        Zu::Locker const guard(recordLock);
        keeper.UpdateMetrics(); // one that throws ends this round: the timer says so
    }
    round.Done();
}

void ControlMetrics::DispatchReports()
{
    for (auto const& [key, event] : SubscribedEvents())
    {
        uint64 const patienceUsec = PatienceLeft(pulse);
        if (patienceUsec == 0)
        {
            return; // the records stand still; who leaves now must not have to wait for us
        }
        ZuCommon::IMetricsSource const& source = manager.GetInstance(key).MetricsSource();
        Zu::Locker const guard(recordLock, patienceUsec);
        event->Fire(source);
    }
}

std::vector<std::pair<std::string, std::shared_ptr<ControlMetrics::ReportEvent>>>
ControlMetrics::SubscribedEvents() const
{
    Zu::Locker const guard(lock);
    std::vector<std::pair<std::string, std::shared_ptr<ReportEvent>>> events;
    events.reserve(reportHandlers.size());
    for (auto const& [key, subscribers] : reportHandlers)
    {
        events.emplace_back(key, subscribers.event);
    }
    return events;
}

std::unique_ptr<Zu::CallbackGate> ControlMetrics::TakeOut(CallbackId const& id, std::string const& key, bool& isLast)
{
    Zu::Locker const guard(lock);
    auto const position = reportHandlers.find(key);
    if (position == reportHandlers.end())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    Subscribers& subscribers = position->second;
    subscribers.event->Remove(id);
    auto gate = subscribers.gates.extract(id.first);
    if (subscribers.event->Empty())
    {
        reportHandlers.erase(position);
    }
    isLast = reportHandlers.empty();
    return gate.empty() ? nullptr : std::move(gate.mapped());
}

uint64 ControlMetrics::ChangeReportInterval(uint64 newIntervalUsec)
{
    reportTimer->Stop();
    Zu::Locker const guard(lock);
    uint64 const oldIntervalUsec = std::exchange(reportInterval, newIntervalUsec);
    reportTimer->Start(reportInterval, false); // with nobody subscribed too
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
