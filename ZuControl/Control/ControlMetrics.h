#pragma once

#include "ZuApi/AsyncTimer.h"
#include "ZuApi/Event.h"
#include "ZuCommon/Metrics.h"
#include "ZuControl/Control/MetricsPulse.h"
#include "ZuControl/Export.h"
#include "wApi/wLock.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ZuControl
{

class IControlManager;
class MetricsRecord;
struct MetricsSnapshot;

/// Keeps the metrics of all services up to date: calls each protocol's `UpdateMetrics` four times a second, whether the
/// protocol is enabled or not, and gives the record of a service to its subscribers once a second.
///
/// In-process readers get the protocol's live record. The updates of one service and the handlers that read its live
/// record take turns. `Snapshot` and snapshot handlers get a copy and wait for no update: while a protocol hangs in its
/// update, they get the copy that was made after the last one. Any thread may call; a handler may add and remove
/// handlers, itself included. The protocols outlive this object.
class ZUCONTROL_API ControlMetrics final : public ZuCommon::IMetricsReporter<std::string const&>
{
public:
    using SnapshotHandler = std::function<void(MetricsSnapshot const&)>;

    /// The updates begin at once.
    explicit ControlMetrics(IControlManager& usedManager);

    /// Waits for the update and the report that run.
    ~ControlMetrics() override;

    ControlMetrics(ControlMetrics const&) = delete;
    ControlMetrics& operator=(ControlMetrics const&) = delete;

    /// The live record of the type `key`. It may change while the caller reads it, unless the caller is a report
    /// handler. Throws `Zu::Status::NOT_FOUND` for an unknown type.
    ZuCommon::IMetricsSource const& LastReport(std::string const& key) override;

    /// From the next report on `handler` gets the live record of the type `key`, on the timer's thread. `handler` must
    /// not block. When it throws, later handlers miss this report. It misses each report during which the
    /// type's update hangs. Throws `Zu::Status::NOT_FOUND` for an unknown type.
    CallbackId AddReportHandler(ReportHandler handler, std::string const& key) override;

    /// Removes a report handler or a snapshot handler. When this returns the handler does not run, unless the handler
    /// itself calls this. An id that is not valid removes nothing. Throws `Zu::Status::BAD_ARGUMENT` for a type without
    /// subscribers.
    void RemoveReportHandler(CallbackId id, std::string const& key) override;

    /// As `AddReportHandler`, but `handler`, which must not be empty, gets the result of `Snapshot`, also while an
    /// update hangs.
    CallbackId AddSnapshotHandler(SnapshotHandler handler, std::string const& key);

    /// A copy of the record of the type `key`: its present state, or, while an update runs and after an update that has
    /// thrown, its state after the last successful update; before the first update, its state at the construction of
    /// this object. Does not wait for an update, unless the record has never been read so far: then it waits for a
    /// second at most and throws `Zu::Status::TIME_OUT`. Throws `Zu::Status::NOT_FOUND` for an unknown type, and the
    /// exceptions of the protocol.
    std::shared_ptr<MetricsSnapshot const> Snapshot(std::string const& key);

    /// The progress of the updates. Does not wait for an update.
    ControlVitals::Metrics Vitals() const;

private:
    friend class ControlMetricsTest; // only the test changes the intervals

    using Source = ZuCommon::IMetricsSource;
    using ReportEvent = Zu::Event<Source const&>;

    void UpdateMetrics();
    void DispatchReports();
    std::vector<std::pair<std::string, std::shared_ptr<ReportEvent>>> SubscribedEvents() const;
    void TakeFirstSnapshots();
    CallbackId Subscribe(ReportHandler handler, std::string const& key);
    void StartReporting() ZU_REQUIRES(lock);
    void StopReporting();
    MetricsRecord& RecordOf(std::string const& key);
    std::shared_ptr<ReportEvent> EventOf(std::string const& key) const;
    uint64 ChangeReportInterval(uint64 newIntervalUsec);
    uint64 ChangeUpdateInterval(uint64 newIntervalUsec);
    void StopReportTimer();
    void StopUpdateTimer();

    IControlManager& manager;
    MetricsPulse pulse;

    // Only the timer's own lock is taken under it. No handler runs under it. No timer is stopped under it, since a stop
    // waits for handlers, which may call this class.
    mutable wLock lock;
    std::map<std::string, std::unique_ptr<MetricsRecord>> records ZU_GUARDED_BY(lock); // entries are never removed
    /// The subscribed types, also with an empty handler. An event is shared with the report that fires it.
    std::map<std::string, std::shared_ptr<ReportEvent>> reportHandlers ZU_GUARDED_BY(lock);
    bool isReporting ZU_GUARDED_BY(lock) = false;          // as last logged
    uint64 reportInterval ZU_GUARDED_BY(lock) = 1'000'000; // microseconds, as the next
    uint64 updateInterval ZU_GUARDED_BY(lock) = 250'000;

    // Last: their callbacks use all of the above.
    std::unique_ptr<Zu::AsyncTimer> updateTimer;
    std::unique_ptr<Zu::AsyncTimer> reportTimer; // runs while there is an entry
};

} // namespace ZuControl
