#pragma once

#include "ZuApi/AsyncTimer.h"
#include "ZuApi/CallbackGate.h"
#include "ZuApi/GuardedEvent.h"
#include "ZuCommon/IMetricsReporter.h"
#include "ZuControl/Control/MetricsPulse.h"
#include "ZuControl/Export.h"
#include "wApi/wLock.h"
#include "wApi/wThreadSafety.h"
#include "wApi/wTypes.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ZuControl
{

class IControlManager;

/// Keeps the metrics of all protocols alive: each is asked to bring its record up to date four times a second, whether it is
/// enabled or not, and those who have subscribed to a type get its record once a second.
///
/// No report is kept: what a subscriber gets is the protocol's own record. Updates, reports and `ReadReport` take turns, so
/// that a record which only its protocol's `UpdateMetrics` writes is never read half way; while an update hangs there are
/// no reports. Any thread may call; a handler may add and remove handlers, itself included. The protocols outlive this.
class ZUCONTROL_API ControlMetrics final : public ZuCommon::IMetricsReporter<std::string const&>
{
public:
    /// The updates begin at once.
    explicit ControlMetrics(IControlManager& usedManager);

    /// Waits for an update and a report that run.
    ~ControlMetrics() override;

    ControlMetrics(ControlMetrics const&) = delete;
    ControlMetrics& operator=(ControlMetrics const&) = delete;

    /// The live record of the type `key`: whoever reads it elsewhere than in a handler sees it change; see ReadReport. -999 for
    /// an unknown type.
    ZuCommon::IMetricsSource const& LastReport(std::string const& key) override;

    /// From the next report on `handler` gets the record of the type `key`, on the timer's thread; it is not to wait. One that
    /// throws ends the report for all who stand behind it, until the next one. -999 for an unknown type.
    CallbackId AddReportHandler(ReportHandler handler, std::string const& key) override;

    /// When this returns the handler does not run, unless this is called from it. An id that is not valid removes nothing.
    /// -997 for a type that nobody has subscribed to.
    void RemoveReportHandler(CallbackId id, std::string const& key) override;

    /// Gives the live record of the type `key` to `reader` while nobody brings it up to date. The reader must not add or remove
    /// handlers: a report may be waiting for it. -999 for an unknown type; -993 when an update has been running for a second.
    void ReadReport(std::string const& key, ReportHandler const& reader);

    /// How the updates go. It waits for none.
    ControlVitals::Metrics Vitals() const;

private:
    friend class ControlMetricsTest; // the intervals are changed by nobody else

    using ReportEvent = Zu::GuardedEvent<ZuCommon::IMetricsSource const&>;

    /// Those who have subscribed to one type. The event is shared with the report that fires it.
    struct Subscribers
    {
        std::shared_ptr<ReportEvent> event = std::make_shared<ReportEvent>();
        std::map<std::weak_ptr<void>, std::unique_ptr<Zu::CallbackGate>, std::owner_less<>> gates; // by the id's place
    };

    void UpdateMetrics();
    void DispatchReports();
    std::vector<std::pair<std::string, std::shared_ptr<ReportEvent>>> SubscribedEvents() const;
    std::unique_ptr<Zu::CallbackGate> TakeOut(CallbackId const& id, std::string const& key, bool& isLast);
    uint64 ChangeReportInterval(uint64 newIntervalUsec);
    uint64 ChangeUpdateInterval(uint64 newIntervalUsec);
    void StopReportTimer();
    void StopUpdateTimer();

    IControlManager& manager;
    MetricsPulse pulse;

    // Held while a protocol brings its record up to date and while anybody reads one: handlers run under it. Taken by the
    // timers and by readers, never by who adds or removes a handler.
    wLock recordLock;

    // A leaf but for the timer's own lock: no handler runs under it, and no timer is stopped under it, since that waits for
    // handlers, which may come back here.
    mutable wLock lock;
    std::map<std::string, Subscribers>
        reportHandlers ZU_GUARDED_BY(lock);                // an entry has a handler, or had a chance of one
    bool isReporting ZU_GUARDED_BY(lock) = false;          // as the log has it
    uint64 reportInterval ZU_GUARDED_BY(lock) = 1'000'000; // microseconds, as the next
    uint64 updateInterval ZU_GUARDED_BY(lock) = 250'000;

    // Last: their callbacks use all of the above.
    std::unique_ptr<Zu::AsyncTimer> updateTimer;
    std::unique_ptr<Zu::AsyncTimer> reportTimer; // runs while there is an entry
};

} // namespace ZuControl
