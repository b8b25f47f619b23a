#pragma once

#include "wApi/wLock.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>

namespace ZuCommon
{
class IMetricsKeeper;
class IMetricsSource;
} // namespace ZuCommon

namespace ZuControl
{

/// A copy of a metrics record, as clients get it. It never changes.
struct MetricsSnapshot
{
    nlohmann::json values;
    nlohmann::json schema;
};

/// Guards the metrics record of one service: its updates and its readers take turns, and the record's last snapshot is kept for
/// readers that must not wait for an update.
///
/// All operations are thread-safe. An operation that is called from a step of this object on the same thread does not wait.
class MetricsRecord final
{
public:
    MetricsRecord();
    ~MetricsRecord();

    MetricsRecord(MetricsRecord const&) = delete;
    MetricsRecord& operator=(MetricsRecord const&) = delete;

    /// Lets `keeper` bring the record up to date, and takes a snapshot of it. Passes on what `keeper` throws; the snapshot then
    /// stays that of the last update that ended well.
    void Update(ZuCommon::IMetricsKeeper& keeper);

    /// Calls `handler` with `source`, the live record, while no update runs. Does nothing when an update goes on for longer than
    /// `patienceUsec` microseconds.
    void Show(ZuCommon::IMetricsSource const& source,
              std::function<void(ZuCommon::IMetricsSource const&)> const& handler, uint64 patienceUsec);

    /// A new snapshot of `source` while no update runs, else the last one. Waits only when there is no snapshot yet, for at most
    /// `patienceUsec` microseconds, and then throws `Zu::Status::TIME_OUT`. Passes on what `source` throws.
    std::shared_ptr<MetricsSnapshot const> Read(ZuCommon::IMetricsSource const& source, uint64 patienceUsec);

private:
    bool InTurn(uint64 patienceUsec, std::function<void()> const& step);
    std::shared_ptr<MetricsSnapshot const> LastSnapshot() const;
    void Keep(std::shared_ptr<MetricsSnapshot const> newSnapshot);

    wLock turn;          // held while the live record is written or read; handlers run under it
    bool isWhole = true; // guarded by `turn`: no update broke off half way through the record

    mutable Zu::Mutex lock; // a leaf
    std::shared_ptr<MetricsSnapshot const> snapshot ZU_GUARDED_BY(lock);
};

} // namespace ZuControl
